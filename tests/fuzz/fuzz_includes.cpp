// "<?include" expansion over a content folder made from the input: a few
// files (some in a subfolder) whose texts hold directives naming each other,
// and a page in the subfolder. Files are read the way the entry point reads
// them.
//
// Input: the number of files, then for each a name (from a small set, so
// that directives find them) and its text; the rest is the page.

#include "common/filesystem/Filesystem.h"
#include "extension/Includes.h"
#include "tests/support/ScratchFolder.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <filesystem>
#include <string>

namespace
{
namespace fs = std::filesystem;

const char* const kNames[] = {"a.htm", "b.html", "sub/c.htm", "sub/d", "e f", "sub/sub/g"};

class FileReader : public Includes::Reader
{
public:
    bool read(const Common::string& path, Common::string& text) override
    {
        return Common::Filesystem::getContents(path, text);
    }
};

// The content folder, made once per process and removed when it ends.
const ScratchFolder& contentFolder()
{
    static const ScratchFolder s_folder;
    return s_folder;
}

Common::string text(const std::string& bytes)
{
    return Common::string(bytes.data(), static_cast<unsigned>(bytes.size()));
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const ScratchFolder& folder = contentFolder();
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(folder.path()))
        fs::remove_all(entry.path(), ignored);
    folder.makeFolder("sub/sub");

    FuzzedDataProvider input(data, size);
    const unsigned files = input.ConsumeIntegralInRange<unsigned>(0, 6);
    for (unsigned i = 0; i < files; ++i)
    {
        const char* name = kNames[input.ConsumeIntegralInRange<unsigned>(0, 5)];
        folder.write(name, input.ConsumeRandomLengthString(512));
    }
    const Common::string page = text(input.ConsumeRemainingBytesAsString());

    FileReader reader;
    const Common::string content = folder.at();
    const Includes::Result result = Includes::expand(page, content + "sub/", content, reader);
    if (result.expansions > Includes::kMaxExpansions || result.text.size() > Includes::kMaxPageBytes)
        __builtin_trap();
    return 0;
}
