#include "collection/UnattendSettings.h"

namespace Collection
{

bool UnattendSettings::has(char const* key) const
{
    return m_answers.find(Common::istring(key)) != m_answers.end();
}

Common::istring UnattendSettings::value(char const* key) const
{
    return valueOr(key, "");
}

Common::istring UnattendSettings::valueOr(char const* key, char const* fallback) const
{
    Answers::const_iterator found = m_answers.find(Common::istring(key));
    return found == m_answers.end() ? Common::istring(fallback) : found->second;
}

} // namespace Collection
