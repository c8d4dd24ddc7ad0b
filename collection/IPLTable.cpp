#include "collection/IPLTable.h"

#include "common/system/Memory.h"

#include <cstring>

namespace Collection
{

namespace
{
const unsigned long long kBiosSegment = 0xF0000;
const unsigned int kSegmentSize = IPLTable::kSegmentSize;
const unsigned int kSignatureSize = 4;
const unsigned int kEntrySize = 16;

// Names of the device types, keyed by the low byte of an entry's type.
const Common::map<unsigned char, Common::istring>& typeNames()
{
    static Common::map<unsigned char, Common::istring> s_names;
    if (s_names.empty())
    {
        const struct
        {
            unsigned char type;
            const char* name;
        } kNames[] = {{0, "reserved"}, {1, "floppy"},   {2, "hd"},  {3, "cdrom"},
                      {4, "pcmcia"},   {5, "usb"},      {6, "pxe"}, {16, "vlmcontroller"},
                      {128, "pxe"},    {255, "unknown"}};
        for (const auto& entry : kNames)
            s_names.insert(Common::pair<unsigned char, Common::istring>(entry.type, entry.name));
    }
    return s_names;
}

Common::istring typeName(unsigned short type)
{
    const Common::map<unsigned char, Common::istring>& names = typeNames();
    Common::map<unsigned char, Common::istring>::const_iterator found =
        names.find(static_cast<unsigned char>(type));
    return found == names.end() ? Common::istring() : found->second;
}

unsigned int littleEndian(const unsigned char* bytes, unsigned int width)
{
    unsigned int value = 0;
    for (unsigned int i = width; i-- > 0;)
        value = value << 8 | bytes[i];
    return value;
}

// Offset of the first "$IPL" in the segment copy, or `size` when it lacks one.
unsigned int findSignature(const unsigned char* segment, unsigned int size)
{
    for (unsigned int at = 0; at + kSignatureSize <= size; ++at)
        if (std::memcmp(segment + at, "$IPL", kSignatureSize) == 0)
            return at;
    return size;
}

// The NUL-terminated text at `offset`; a text that runs to the segment's end
// without a NUL is cut there.
Common::istring textAt(const unsigned char* segment, unsigned int offset)
{
    const char* text = reinterpret_cast<const char*>(segment) + offset;
    const void* end = std::memchr(text, 0, kSegmentSize - offset);
    unsigned int length =
        end != nullptr ? static_cast<const char*>(end) - text : kSegmentSize - offset;
    return Common::istring(text, length);
}

// The segment copy; released on every path.
class SegmentCopy
{
public:
    SegmentCopy() : m_bytes(new unsigned char[kSegmentSize])
    {
        m_read = Common::System::Memory::Read(kBiosSegment, m_bytes, kSegmentSize);
    }
    ~SegmentCopy() { delete[] m_bytes; }
    SegmentCopy(const SegmentCopy&) = delete;
    SegmentCopy& operator=(const SegmentCopy&) = delete;

    bool read() const { return m_read; }
    const unsigned char* bytes() const { return m_bytes; }

private:
    unsigned char* m_bytes;
    bool m_read;
};
} // namespace

IPLTable::IPLTable()
{
    SegmentCopy segment;
    if (segment.read())
        decode(segment.bytes());
}

IPLTable::IPLTable(const unsigned char* segment)
{
    if (segment != nullptr)
        decode(segment);
}

void IPLTable::decode(const unsigned char* bytes)
{
    unsigned int at = findSignature(bytes, kSegmentSize);
    if (at == kSegmentSize)
        return;
    at += kSignatureSize;
    // A table placed at the segment's very end has no room for all 16
    // entries: the entries that fit are read.
    for (unsigned int index = 0; index < kMaximumEntries && at + kEntrySize <= kSegmentSize;
         ++index, at += kEntrySize)
    {
        const unsigned char* raw = bytes + at;
        unsigned short type = static_cast<unsigned short>(littleEndian(raw, 2));
        if (type == 0)
            break;
        unsigned int location = littleEndian(raw + 8, 4);
        _IPL_TABLE_ENTRY entry;
        entry.type = type;
        entry.bus = static_cast<unsigned char>(location >> 24);
        entry.device = static_cast<unsigned char>(location >> 19 & 0x1F);
        entry.function = static_cast<unsigned char>(location >> 16 & 0x03);
        entry.name = typeName(type);
        entry.description = textAt(bytes, location & 0xFFFF);
        m_entries.insert(Common::pair<unsigned int, _IPL_TABLE_ENTRY>(index, entry));
    }
}

IPLTable::~IPLTable() {}

const IPLTable::_IPL_TABLE_ENTRY& IPLTable::operator[](unsigned int index) const
{
    static const _IPL_TABLE_ENTRY s_none = {0, 0, 0, 0, Common::istring(), Common::istring()};
    Common::map<unsigned int, _IPL_TABLE_ENTRY>::const_iterator found = m_entries.find(index);
    return found == m_entries.end() ? s_none : found->second;
}

} // namespace Collection
