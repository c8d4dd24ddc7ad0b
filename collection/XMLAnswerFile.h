#pragma once

#include "collection/AnswerFileText.h"
#include "collection/UnattendSettings.h"
#include "common/IString.h"

namespace Collection
{

// The XML answer file of the newer OS family, in the unattend schema's
// namespace "urn:schemas-microsoft-com:unattend". Built from fixed template
// text and the values as typed; each value is escaped where it is placed
// (XMLEscape.h), so the document stays well-formed whatever was typed.
class XMLAnswerFile
{
public:
    // Fixes every value the document uses; `x64` selects the "amd64" variant
    // of the components instead of "x86".
    XMLAnswerFile(UnattendSettings const& settings, bool x64);

    // The document: CR LF after every line except the last ("</unattend>").
    Common::istring render() const;

private:
    void writeServicing(AnswerFileText& out) const;
    void writeWindowsPE(AnswerFileText& out) const;
    void writeSpecialize(AnswerFileText& out) const;
    void writeOobeSystem(AnswerFileText& out) const;
    // The administrator password, in plain text, as the element `name`.
    void writeAdminPassword(AnswerFileText& out, char const* name) const;
    void writeFirstLogonCommands(AnswerFileText& out) const;
    void writeJoin(AnswerFileText& out) const;
    // The start tag of a component named `name` for this architecture.
    Common::istring component(char const* name, char const* versionScope = "nonSxS") const;

    // The values as typed, unescaped: every decision (the package, the
    // keyboard driver, which optional parts are written) looks at these.
    // Escape them only when writing them out, never here.
    Common::istring m_version;
    Common::istring m_image;
    Common::istring m_computer;
    Common::istring m_owner;
    Common::istring m_organization;
    Common::istring m_adminPassword;
    Common::istring m_logonCount;
    Common::istring m_timeZone;
    Common::istring m_workgroup;
    Common::istring m_domain;
    Common::istring m_joinDomainName;
    Common::istring m_joinUser;
    Common::istring m_joinPassword;
    Common::istring m_productKey;
    Common::istring m_language;
    Common::istring m_keyboard;
    Common::istring m_firstCommand;
    Common::istring m_readCommunity;
    Common::istring m_writeCommunity;
    Common::istring m_trapTarget;
    char const* m_arch;
    bool m_snmp;
    bool m_traps;
    bool m_rotate;
    bool m_wmi;
    bool m_core;
    bool m_sbs;
};

} // namespace Collection
