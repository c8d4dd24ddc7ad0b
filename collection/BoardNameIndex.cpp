#include "collection/BoardNameIndex.h"

namespace Collection
{

namespace
{
const unsigned kKeyDigits = 16;

// The value of a key of exactly sixteen digits 0-9 and A-F; false for any
// other text (lower-case digits included: such keys never match).
bool parseKey(const Common::string& text, unsigned long long& key)
{
    if (text.size() != kKeyDigits)
        return false;
    key = 0;
    for (unsigned i = 0; i < kKeyDigits; ++i)
    {
        const char c = text[i];
        unsigned digit = 0;
        if (c >= '0' && c <= '9')
            digit = static_cast<unsigned>(c - '0');
        else if (c >= 'A' && c <= 'F')
            digit = static_cast<unsigned>(c - 'A' + 10);
        else
            return false;
        key = key << 4 | digit;
    }
    return true;
}

// Mixes every bit of the key into the low bits that pick the bucket.
unsigned hashOf(unsigned long long key)
{
    key ^= key >> 33;
    key *= 0xFF51AFD7ED558CCDull;
    key ^= key >> 33;
    return static_cast<unsigned>(key);
}
} // namespace

BoardNameIndex::BoardNameIndex(const Common::XML::Element& pci) : m_buckets(nullptr), m_mask(0)
{
    typedef Common::XML::Element::ElementIterator Iterator;
    unsigned entries = 0;
    for (Iterator it = pci.elementBegin(); it != pci.elementEnd(); ++it)
        ++entries;
    if (entries == 0)
        return;
    // At most half full, so that probe runs stay short.
    unsigned buckets = 2;
    while (buckets < 2 * entries)
        buckets *= 2;
    m_buckets = new Bucket[buckets]();
    m_mask = buckets - 1;

    const Common::string entryTag("dev");
    const Common::string keyAttribute("id");
    const Common::string nameTag("name");
    for (Iterator it = pci.elementBegin(); it != pci.elementEnd(); ++it)
    {
        unsigned long long key = 0;
        if (it->get() == nullptr)
            continue;
        const Common::XML::Element& entry = **it;
        if (entry.tag() == entryTag && parseKey(entry.attribute(keyAttribute), key) &&
            entry.hasElement(nameTag))
        {
            Bucket& bucket = bucketOf(key);
            bucket.key = key;
            bucket.name = entry.getElement(nameTag).get();
        }
    }
}

BoardNameIndex::~BoardNameIndex()
{
    delete[] m_buckets;
}

const Common::XML::Element* BoardNameIndex::find(unsigned short vendor, unsigned short device,
                                                 unsigned int subsystem) const
{
    if (m_buckets == nullptr)
        return nullptr;
    const unsigned long long key = static_cast<unsigned long long>(vendor) << 48 |
                                   static_cast<unsigned long long>(device) << 32 | subsystem;
    return bucketOf(key).name;
}

BoardNameIndex::Bucket& BoardNameIndex::bucketOf(unsigned long long key) const
{
    // Linear probing; the table is never full, so the walk ends.
    unsigned at = hashOf(key) & m_mask;
    while (m_buckets[at].name != nullptr && m_buckets[at].key != key)
        at = (at + 1) & m_mask;
    return m_buckets[at];
}

} // namespace Collection
