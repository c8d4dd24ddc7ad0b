// bench_xml: parsing a PCI names database with Common::XML against
// xmllint, in the same run.
//
// The database is generated from Debian's pci.ids (package hwdata): one
// element "dev" per device line (subsystem value 0) and one per subsystem
// line, keyed "%04X%04X%08X" from vendor, device and subvendor<<16|subdevice,
// with the display name in a child "name" -- about 33,000 entries, a few
// megabytes, indented, after an XML declaration and one comment. It is written
// to a temporary file, then timed:
//   ours:    read(2) of the file into a Common::string and Parser::XML into a
//            fresh root; timed once more including the release of the tree
//            and the text;
//   xmllint: "xmllint --noout FILE" as a child process (its start, parse,
//            release and exit), its CPU time taken from wait4.
// Each is run several times, interleaved, and the best time of each counts.
// The figure is CPU time (user + system): the machines are shared by several
// builds at once, and wall time then mostly measures waiting for a core.
// The first figure (read + parse against xmllint, CPU time) has the goal
// <= 1; the others, wall time and our time including the release of the
// tree, are reported. The parse result is checked against the generated
// entries; the program fails if it differs or if xmllint rejects the file.
//
// Usage: bench_xml [pci.ids] [runs]
#include "BenchTiming.h"

#include "common/XML.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <spawn.h>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>
#include <vector>

extern char** environ;

namespace
{
struct Entry
{
    std::string id;
    std::string name; // as written, with &, < and > escaped
};

// Wall time, and the CPU time (user + system) of this process.
struct Clock
{
    double wall;
    double cpu;
};

double seconds(clockid_t id)
{
    timespec t;
    clock_gettime(id, &t);
    return t.tv_sec + t.tv_nsec / 1e9;
}

Clock now()
{
    return {seconds(CLOCK_MONOTONIC), seconds(CLOCK_PROCESS_CPUTIME_ID)};
}

Clock since(const Clock& start)
{
    Clock end = now();
    return {end.wall - start.wall, end.cpu - start.cpu};
}

Clock best(const Clock& a, const Clock& b)
{
    return {std::min(a.wall, b.wall), std::min(a.cpu, b.cpu)};
}

bool isHex(const std::string& s, size_t at, size_t n)
{
    if (s.size() < at + n)
        return false;
    for (size_t i = at; i < at + n; ++i)
        if (!std::isxdigit(static_cast<unsigned char>(s[i])))
            return false;
    return true;
}

std::string escape(const std::string& s)
{
    std::string out;
    for (char c : s)
    {
        if (c == '&')
            out += "&amp;";
        else if (c == '<')
            out += "&lt;";
        else if (c == '>')
            out += "&gt;";
        else
            out += c;
    }
    return out;
}

std::string key(unsigned vendor, unsigned device, unsigned subsystem)
{
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%04X%04X%08X", vendor, device, subsystem);
    return buffer;
}

// Vendor "vvvv  name", device "\tdddd  name", subsystem "\t\tssss ssss  name";
// the class list that follows the first "C " line is not read.
std::vector<Entry> readPciIds(const char* path)
{
    std::vector<Entry> entries;
    std::ifstream in(path);
    std::string line;
    unsigned vendor = 0;
    unsigned device = 0;
    bool haveVendor = false;
    bool haveDevice = false;
    while (std::getline(in, line))
    {
        if (line.compare(0, 2, "C ") == 0)
            break;
        if (isHex(line, 0, 4) && line.compare(4, 2, "  ") == 0)
        {
            vendor = std::stoul(line.substr(0, 4), nullptr, 16);
            haveVendor = true;
            haveDevice = false;
        }
        else if (haveVendor && line.size() > 7 && line[0] == '\t' && line[1] != '\t' &&
                 isHex(line, 1, 4) && line.compare(5, 2, "  ") == 0)
        {
            device = std::stoul(line.substr(1, 4), nullptr, 16);
            haveDevice = true;
            entries.push_back({key(vendor, device, 0), escape(line.substr(7))});
        }
        else if (haveDevice && line.size() > 13 && line.compare(0, 2, "\t\t") == 0 &&
                 isHex(line, 2, 4) && line[6] == ' ' && isHex(line, 7, 4) &&
                 line.compare(11, 2, "  ") == 0)
        {
            unsigned subvendor = std::stoul(line.substr(2, 4), nullptr, 16);
            unsigned subdevice = std::stoul(line.substr(7, 4), nullptr, 16);
            entries.push_back(
                {key(vendor, device, subvendor << 16 | subdevice), escape(line.substr(13))});
        }
    }
    return entries;
}

std::string document(const std::vector<Entry>& entries)
{
    std::string doc = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                      "<!-- PCI names database, generated from pci.ids -->\n"
                      "<AllBoards>\n  <PCI>\n";
    for (const Entry& e : entries)
        doc += "    <dev id=\"" + e.id + "\">\n      <name>" + e.name + "</name>\n    </dev>\n";
    doc += "  </PCI>\n</AllBoards>\n";
    return doc;
}

Common::string readFile(const char* path)
{
    int fd = open(path, O_RDONLY);
    if (fd < 0)
        return Common::string();
    struct stat st;
    if (fstat(fd, &st) != 0)
    {
        close(fd);
        return Common::string();
    }
    char* bytes = nullptr;
    Common::string text = Common::string::uninitialized(static_cast<unsigned>(st.st_size), bytes);
    size_t done = 0;
    while (done < static_cast<size_t>(st.st_size))
    {
        ssize_t got = read(fd, bytes + done, st.st_size - done);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            break;
        done += static_cast<size_t>(got);
    }
    close(fd);
    if (done != static_cast<size_t>(st.st_size))
        return Common::string(bytes, static_cast<unsigned>(done));
    return text;
}

// Parses the file once and compares the tree with the generated entries.
bool verify(const char* path, const std::vector<Entry>& expected)
{
    Common::string text = readFile(path);
    Common::shared_ptr<Common::XML::Element> root(new Common::XML::Element("null"));
    Common::XML::Parser().XML(text, root);
    if (root->tag() != "AllBoards" || !root->hasElement("PCI"))
        return false;
    Common::shared_ptr<Common::XML::Element> pci = root->getElement("PCI");
    size_t i = 0;
    for (auto it = pci->elementBegin(); it != pci->elementEnd(); ++it, ++i)
    {
        const Common::XML::Element& dev = **it;
        if (i >= expected.size() || dev.tag() != "dev" ||
            dev.attribute("id") != expected[i].id.c_str() ||
            dev.getElement("name")->text() != expected[i].name.c_str())
        {
            std::fprintf(stderr, "bench_xml: entry %zu of the parsed tree differs\n", i);
            return false;
        }
    }
    return i == expected.size();
}

// Times of read + parse (`parse`) and of read + parse + release (result).
Clock timeOurs(const char* path, Clock& parse)
{
    Clock start = now();
    {
        Common::string text = readFile(path);
        Common::shared_ptr<Common::XML::Element> root(new Common::XML::Element("null"));
        Common::XML::Parser().XML(text, root);
        parse = since(start);
    }
    return since(start);
}

// The times of one "xmllint --noout" (its CPU time from wait4), or false
// when it could not run or rejected the file.
bool timeXmllint(const char* path, Clock& took)
{
    const char* argv[] = {"xmllint", "--noout", path, nullptr};
    Clock start = now();
    pid_t pid = 0;
    if (posix_spawnp(&pid, "xmllint", nullptr, nullptr, const_cast<char**>(argv), environ) != 0)
    {
        std::fprintf(stderr, "bench_xml: cannot run xmllint (Debian package libxml2-utils)\n");
        return false;
    }
    int status = 0;
    struct rusage usage;
    while (wait4(pid, &status, 0, &usage) < 0 && errno == EINTR)
    {
    }
    took.wall = since(start).wall;
    took.cpu = usage.ru_utime.tv_sec + usage.ru_utime.tv_usec / 1e6 + usage.ru_stime.tv_sec +
               usage.ru_stime.tv_usec / 1e6;
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
    {
        std::fprintf(stderr, "bench_xml: xmllint rejected %s\n", path);
        return false;
    }
    return true;
}
} // namespace

int main(int argc, char** argv)
{
    const char* ids = argc > 1 ? argv[1] : "/usr/share/misc/pci.ids";
    int runs = argc > 2 ? std::atoi(argv[2]) : 7;
    if (runs < 1)
        runs = 1;

    std::vector<Entry> entries = readPciIds(ids);
    if (entries.empty())
    {
        std::fprintf(stderr, "bench_xml: no entries read from %s (Debian package hwdata)\n", ids);
        return 1;
    }
    std::string doc = document(entries);

    const char* tmpdir = std::getenv("TMPDIR");
    std::string path = std::string(tmpdir && *tmpdir ? tmpdir : "/tmp") + "/bench_xml.XXXXXX";
    std::vector<char> name(path.begin(), path.end());
    name.push_back('\0');
    int fd = mkstemp(name.data());
    if (fd < 0 || write(fd, doc.data(), doc.size()) != static_cast<ssize_t>(doc.size()))
    {
        std::fprintf(stderr, "bench_xml: cannot write the temporary file %s\n", name.data());
        if (fd >= 0)
            unlink(name.data());
        return 1;
    }
    close(fd);
    const char* file = name.data();

    if (!verify(file, entries))
    {
        std::fprintf(stderr, "bench_xml: the parsed tree differs from the generated entries\n");
        unlink(file);
        return 1;
    }
    Clock lint = {0, 0};
    if (!timeXmllint(file, lint)) // also the warm-up: page cache, dynamic loader
    {
        unlink(file);
        return 1;
    }

    const Clock none = {1e9, 1e9};
    Clock bestOurs = none;
    Clock bestParse = none;
    Clock bestLint = none;
    for (int i = 0; i < runs; ++i)
    {
        Clock parse = none;
        bestOurs = best(bestOurs, timeOurs(file, parse));
        bestParse = best(bestParse, parse);
        if (!timeXmllint(file, lint))
        {
            unlink(file);
            return 1;
        }
        bestLint = best(bestLint, lint);
    }
    unlink(file);

    std::printf("names database: %zu entries, %zu bytes; best of %d runs\n", entries.size(),
                doc.size(), runs);
    reportRatio("parse names database vs xmllint --noout (CPU time)", bestParse.cpu, bestLint.cpu,
                1.0);
    reportRatio("parse names database vs xmllint --noout (wall time)", bestParse.wall,
                bestLint.wall, 0);
    reportRatio("parse and release names database vs xmllint --noout (CPU time)", bestOurs.cpu,
                bestLint.cpu, 0);
    return 0;
}
