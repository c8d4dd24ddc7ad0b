// Foundation figures: reading a 16 MiB file into a Common::string through
// InputStreamFromFile against one read(2) into a plain buffer; 100,000
// allocate/free pairs of 8-200 byte blocks from the memory pool against the
// C library's malloc/free.
#include "BenchTiming.h"

#include "common/GlobalStaticAllocator.h"
#include "common/InputStreamFromFile.h"
#include "common/filesystem/TemporaryFile.h"

#include <cstdlib>
#include <random>
#include <string>
#include <vector>

namespace
{
const unsigned kFileSize = 16u << 20;

void readThroughStream(std::string const& path)
{
    Common::InputStreamFromFile in(path.c_str());
    Common::string text;
    in.readBuffer(text);
    if (text.size() != kFileSize)
        std::abort();
}

const unsigned kPairs = 100000;
const unsigned kLive = 32; // blocks alive at once: each new one frees the oldest

template <class Allocate, class Release>
void churn(std::vector<unsigned> const& sizes, Allocate allocate, Release release)
{
    void* live[kLive] = {};
    for (unsigned i = 0; i < kPairs; ++i)
    {
        void*& slot = live[i % kLive];
        if (slot)
            release(slot);
        slot = allocate(sizes[i]);
        static_cast<char*>(slot)[0] = 1;
    }
    for (void* p : live)
        if (p)
            release(p);
}
} // namespace

int main()
{
    {
        std::string letters(kFileSize, '\0');
        for (size_t i = 0; i < letters.size(); ++i)
            letters[i] = static_cast<char>('a' + i % 26);
        Common::Filesystem::TemporaryFile file("", true);
        const std::string path = file.name().c_str();
        writeFile(path, letters);
        readPlain(path); // warm the page cache
        double reference = bestSeconds(15, [&] { readPlain(path); });
        double ours = bestSeconds(15, [&] { readThroughStream(path); });
        reportRatio("read 16 MiB file into Common::string vs read(2)", ours, reference, 1.5);
    }

    std::mt19937 random(7);
    std::uniform_int_distribution<unsigned> size(8, 200);
    std::vector<unsigned> sizes(kPairs);
    for (unsigned& n : sizes)
        n = size(random);
    double pool = bestSeconds(
        15,
        [&]
        {
            churn(
                sizes, [](unsigned n) { return Common::GlobalStaticAllocator::allocate(n); },
                [](void* p) { Common::GlobalStaticAllocator::deallocate(p); });
        });
    double heap = bestSeconds(15, [&] { churn(sizes, std::malloc, std::free); });
    reportRatio("100,000 allocate/free pairs of 8-200 bytes, pool vs malloc/free", pool, heap, 3.0);
    return 0;
}
