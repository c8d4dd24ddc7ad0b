#pragma once

#include "common/IString.h"
#include "common/Map.h"

namespace Collection
{

// The answers of an Unattend as the answer-file writers read them. Keys match
// ignoring letter case; a key stored with an empty value is present.
//
// Reading never adds a key, so every presence test sees exactly the answers
// the page stored, however many values were read before it.
// Holds a reference: the answers must outlive this view.
class UnattendSettings
{
public:
    typedef Common::map<Common::istring, Common::istring> Answers;

    explicit UnattendSettings(Answers const& answers) : m_answers(answers) {}

    bool has(char const* key) const;
    // The stored value; empty when the key is absent.
    Common::istring value(char const* key) const;
    // The stored value, or `fallback` when the key is absent (a present key
    // with an empty value stays empty).
    Common::istring valueOr(char const* key, char const* fallback) const;

private:
    Answers const& m_answers;
};

} // namespace Collection
