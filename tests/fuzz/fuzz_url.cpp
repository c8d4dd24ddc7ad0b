// A URL through the entry point's normalisation, the file it names, and the
// request parser over its query, with every parameter looked up again.

#include "extension/NSP.h"
#include "extension/NSPRequest.h"
#include "extension/Routing.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    const bool post = input.ConsumeBool();
    const std::string url = input.ConsumeRemainingBytesAsString();
    const Common::istring text(url.data(), static_cast<unsigned>(url.size()));

    const Routing::Target target = Routing::normalise(text);
    const Routing::FilePath file = Routing::fileFor("/srv/content/", target.page);
    Routing::isPHP(target.page);
    Routing::expandsIncludes(file.extension);
    // The path is cut into folder and name without losing a byte.
    if (Common::string(file.folder + file.name) != file.path)
        __builtin_trap();

    NSPRequest request(post ? "POST" : "GET", target.query);
    for (auto it = request.parameters().begin(); it != request.parameters().end(); ++it)
    {
        request(it->name);
        request.list(it->name);
    }
    request("Command");

    // Decoding never lengthens a text.
    const Common::string decoded = NSP::decode(Common::string(target.query));
    if (decoded.size() > target.query.size())
        __builtin_trap();
    return 0;
}
