#include "collection/XMLAnswerFile.h"

#include "collection/XMLEscape.h"

namespace Collection
{
namespace
{

// Values that decide the document's shape compare case-sensitively, unlike
// the case-insensitive settings they come from.
bool contains(Common::istring const& text, char const* what)
{
    return Common::string(text).find(what) != Common::string::npos;
}

bool equalsExactly(Common::istring const& text, char const* what)
{
    return Common::string(text) == what;
}

char const* boolean(bool value)
{
    return value ? "true" : "false";
}

// "<name>value</name>" on one line, the value escaped as element text.
Common::istring element(char const* name, Common::istring const& value)
{
    return Common::istring("<") + name + ">" + xmlText(Common::string(value)) + "</" + name + ">";
}

// The value escaped for an attribute in double quotes.
Common::istring attribute(Common::istring const& value)
{
    return xmlAttribute(Common::string(value));
}

} // namespace

XMLAnswerFile::XMLAnswerFile(UnattendSettings const& settings, bool x64)
    : m_version(settings.valueOr("WIMVersion", "6.0.6001.18000")),
      m_image(settings.valueOr("ImageName", "Windows Longhorn SERVERENTERPRISE")),
      m_computer(settings.valueOr("ComputerName", "*")), m_owner(settings.value("FullName")),
      m_organization(settings.value("OrganizationName")),
      m_adminPassword(settings.value("AdminPassword")),
      m_logonCount(settings.value("AutoLogonCount")), m_timeZone(settings.value("TimeZone")),
      m_workgroup(settings.value("JoinWorkgroup")), m_domain(settings.value("JoinDomain")),
      m_joinDomainName(m_domain), m_joinUser(settings.value("DomainAdmin")),
      m_joinPassword(settings.value("DomainAdminPassword")),
      m_productKey(settings.value("ProductID")), m_language(settings.valueOr("Language", "en-US")),
      m_keyboard(settings.valueOr("Keyboard", "en-US")),
      m_firstCommand(settings.valueOr("FirstLogonCommand", "cmd.exe /c")),
      m_readCommunity(settings.value("SNMPMonitor")),
      m_writeCommunity(settings.value("SNMPControl")), m_trapTarget(settings.value("SNMPTraps")),
      m_arch(x64 ? "amd64" : "x86"), m_snmp(settings.has("SNMPMonitor")),
      m_traps(settings.has("SNMPTraps")), m_rotate(settings.has("Rotate")),
      m_wmi(equalsExactly(settings.valueOr("WMIEnabled", "No"), "Yes")),
      m_core(contains(m_image, "CORE")), m_sbs(contains(m_image, "SBS"))
{
    // "DOMAIN\user" or "DOMAIN/user" names the domain to authenticate in
    // ("\" is looked for first). The user name keeps the separator as its
    // first character ("CORP\admin" gives "CORP" and "\admin"); this is the
    // established form of these files, keep it.
    Common::string user(m_joinUser);
    unsigned separator = user.find('\\');
    if (separator == Common::string::npos)
        separator = user.find('/');
    if (separator != Common::string::npos)
    {
        m_joinDomainName = user.substr(0, separator);
        m_joinUser = user.substr(separator);
    }
}

Common::istring XMLAnswerFile::render() const
{
    AnswerFileText out;
    out.line(0, "<?xml version=\"1.0\" encoding=\"utf-8\"?>");
    out.line(0, "<unattend xmlns=\"urn:schemas-microsoft-com:unattend\">");
    writeServicing(out);
    writeWindowsPE(out);
    if (m_snmp)
        writeSpecialize(out);
    writeOobeSystem(out);
    out.lastLine(0, "</unattend>");
    return out.text();
}

void XMLAnswerFile::writeServicing(AnswerFileText& out) const
{
    Common::istring afterPackageName = Common::istring("\" version=\"") + attribute(m_version) +
                                       "\" processorArchitecture=\"" + m_arch +
                                       "\" publicKeyToken=\"31bf3856ad364e35\" language=\"\" />";
    Common::istring afterSelectionName = Common::istring("\" state=\"") + boolean(m_snmp) + "\" />";
    out.line(4, "<servicing>");
    out.line(8, "<package action=\"configure\">");
    if (m_core)
    {
        out.line(12, "<assemblyIdentity name=\"Microsoft-Windows-ServerCore-Package" +
                         afterPackageName);
        out.line(12, "<selection name=\"SNMP-SC" + afterSelectionName);
    }
    else
    {
        out.line(12, "<assemblyIdentity name=\"Microsoft-Windows-Foundation-Package" +
                         afterPackageName);
        out.line(12, "<selection name=\"SNMP" + afterSelectionName);
        out.line(12, Common::istring("<selection name=\"WMISnmpProvider\" state=\"") +
                         boolean(m_wmi) + "\" />");
    }
    out.line(8, "</package>");
    out.line(4, "</servicing>");
}

void XMLAnswerFile::writeWindowsPE(AnswerFileText& out) const
{
    out.line(4, "<settings pass=\"windowsPE\">");
    out.line(8, component("Microsoft-Windows-Setup"));
    out.line(12, "<Display>");
    out.line(16, "<ColorDepth>32</ColorDepth>");
    out.line(16, "<HorizontalResolution>1024</HorizontalResolution>");
    out.line(16, "<RefreshRate>60</RefreshRate>");
    out.line(16, "<VerticalResolution>768</VerticalResolution>");
    out.line(12, "</Display>");
    out.line(12, "<ImageInstall>");
    out.line(16, "<OSImage>");
    out.line(20, "<InstallFrom>");
    out.line(24, "<MetaData wcm:action=\"add\">");
    out.line(28, "<Key>/IMAGE/NAME</Key>");
    out.line(28, element("Value", m_image));
    out.line(24, "</MetaData>");
    out.line(20, "</InstallFrom>");
    out.line(20, "<InstallTo>");
    out.line(24, "<DiskID>0</DiskID>");
    out.line(24, "<PartitionID>1</PartitionID>");
    out.line(20, "</InstallTo>");
    out.line(20, "<InstallToAvailablePartition>false</InstallToAvailablePartition>");
    out.line(20, "<WillShowUI>OnError</WillShowUI>");
    out.line(16, "</OSImage>");
    out.line(12, "</ImageInstall>");
    out.line(12, "<UserData>");
    // The licence is accepted only for a rotating (automated) installation.
    out.line(16, element("AcceptEula", boolean(m_rotate)));
    out.line(16, element("FullName", m_owner));
    out.line(16, element("Organization", m_organization));
    out.line(16, "<ProductKey>");
    out.line(20, "<WillShowUI>OnError</WillShowUI>");
    if (!m_productKey.empty())
        out.line(20, element("Key", m_productKey));
    out.line(16, "</ProductKey>");
    out.line(12, "</UserData>");
    out.line(8, "</component>");

    out.line(8, component("Microsoft-Windows-International-Core-WinPE"));
    out.line(12, "<SetupUILanguage>");
    out.line(16, element("UILanguage", m_language));
    out.line(12, "</SetupUILanguage>");
    out.line(12, element("UILanguage", m_language));
    out.line(12, element("UserLocale", m_language));
    out.line(12, element("InputLocale", m_keyboard));
    // The Japanese keyboard needs its layered driver (106/109-key layout).
    if (equalsExactly(m_keyboard, "ja-JP"))
        out.line(12, "<LayeredDriver>6</LayeredDriver>");
    out.line(12, element("SystemLocale", m_language));
    out.line(8, "</component>");
    out.line(4, "</settings>");
}

void XMLAnswerFile::writeSpecialize(AnswerFileText& out) const
{
    out.line(4, "<settings pass=\"specialize\">");
    out.line(8, component("Microsoft-Windows-SNMP-Agent-Service", "NonSxS"));
    if (m_traps)
    {
        out.line(12, "<TrapConfiguration>");
        out.line(16, "<TrapConfigurationItems wcm:action=\"add\">");
        out.line(20, element("Community_Name", m_readCommunity));
        out.line(20, element("Traps", m_trapTarget));
        out.line(16, "</TrapConfigurationItems>");
        out.line(12, "</TrapConfiguration>");
    }
    // 4 grants read-only access, 16 read-create. The second community is
    // written even when empty.
    out.line(12, "<ValidCommunities>");
    out.line(16, "<ValidCommunity wcm:action=\"add\" wcm:keyValue=\"" + attribute(m_readCommunity) +
                     "\">4</ValidCommunity>");
    out.line(16, "<ValidCommunity wcm:action=\"add\" wcm:keyValue=\"" +
                     attribute(m_writeCommunity) + "\">16</ValidCommunity>");
    out.line(12, "</ValidCommunities>");
    out.line(8, "</component>");

    if (m_rotate)
    {
        out.line(8, component("Microsoft-Windows-Deployment"));
        out.line(12, "<RunSynchronous>");
        out.line(16, "<RunSynchronousCommand wcm:action=\"add\">");
        out.line(20, "<Path>reg add \"HKLM\\Software\\Microsoft\\Windows\\CurrentVersion\\Run\" "
                     "/v DiscAutomate /t REG_SZ /d C:\\automate.vbs /f</Path>");
        out.line(20, "<Description>Rotate Script</Description>");
        out.line(20, "<Order>2</Order>");
        out.line(16, "</RunSynchronousCommand>");
        out.line(12, "</RunSynchronous>");
        out.line(8, "</component>");
    }

    out.line(8, component("Microsoft-Windows-Shell-Setup"));
    out.line(12, element("ComputerName", m_computer));
    out.line(8, "</component>");
    out.line(4, "</settings>");
}

void XMLAnswerFile::writeOobeSystem(AnswerFileText& out) const
{
    out.line(4, "<settings pass=\"oobeSystem\">");
    out.line(8, component("Microsoft-Windows-Shell-Setup"));
    if (!m_logonCount.empty() && !m_adminPassword.empty())
    {
        out.line(12, "<AutoLogon>");
        out.line(15, "<Enabled>true</Enabled>");
        out.line(15, element("LogonCount", m_logonCount));
        writeAdminPassword(out, "Password");
        out.line(15, "<Username>Administrator</Username>");
        out.line(12, "</AutoLogon>");
    }
    writeFirstLogonCommands(out);
    out.line(12, "<OOBE>");
    out.line(16, "<HideEULAPage>true</HideEULAPage>");
    out.line(12, "</OOBE>");
    if (!m_productKey.empty())
        out.line(12, element("ProductKey", m_productKey));
    out.line(12, element("RegisteredOrganization", m_organization));
    out.line(12, element("RegisteredOwner", m_owner));
    if (!m_timeZone.empty())
        out.line(12, element("TimeZone", m_timeZone));
    if (!m_adminPassword.empty())
    {
        out.line(12, "<UserAccounts>");
        writeAdminPassword(out, "AdministratorPassword");
        out.line(12, "</UserAccounts>");
    }
    out.line(8, "</component>");
    writeJoin(out);
    out.line(4, "</settings>");
}

void XMLAnswerFile::writeAdminPassword(AnswerFileText& out, char const* name) const
{
    out.line(15, Common::istring("<") + name + ">");
    out.line(18, "<PlainText>true</PlainText>");
    out.line(18, element("Value", m_adminPassword));
    out.line(15, Common::istring("</") + name + ">");
}

void XMLAnswerFile::writeFirstLogonCommands(AnswerFileText& out) const
{
    // The last command finishes the installation: Small Business Server's
    // setup is told to reboot through its own flag, any other image restarts
    // at once.
    Common::istring const commands[] = {
        m_firstCommand,
        "cmd.exe /C C:\\cleanup.cmd",
        "cmd.exe /C del /Q C:\\cleanup.cmd",
        m_sbs ? "reg add \"HKLM\\SOFTWARE\\Microsoft\\SmallBusinessServer\\Setup\" /v "
                "RebootNeeded /t REG_DWORD /d 1 /f"
              : "shutdown -r -t 0",
    };
    char const* const orders[] = {"1", "2", "3", "4"};
    out.line(12, "<FirstLogonCommands>");
    for (unsigned i = 0; i < 4; ++i)
    {
        out.line(16, "<SynchronousCommand wcm:action=\"add\">");
        out.line(20, element("Order", orders[i]));
        out.line(20, element("CommandLine", commands[i]));
        out.line(16, "</SynchronousCommand>");
    }
    out.line(12, "</FirstLogonCommands>");
}

void XMLAnswerFile::writeJoin(AnswerFileText& out) const
{
    bool workgroup = !m_workgroup.empty();
    bool domain = !m_domain.empty() && !m_joinUser.empty() && !m_joinPassword.empty();
    if (!workgroup && !domain)
        return;
    out.line(8, component("Microsoft-Windows-UnattendedJoin"));
    out.line(12, "<Identification>");
    if (workgroup)
        out.line(15, element("JoinWorkgroup", m_workgroup));
    else
    {
        out.line(15, "<Credentials>");
        out.line(18, element("Domain", m_joinDomainName));
        out.line(18, element("Password", m_joinPassword));
        out.line(18, element("Username", m_joinUser));
        out.line(15, "</Credentials>");
        out.line(15, element("JoinDomain", m_domain));
    }
    out.line(12, "</Identification>");
    out.line(8, "</component>");
}

Common::istring XMLAnswerFile::component(char const* name, char const* versionScope) const
{
    return Common::istring("<component name=\"") + name + "\" processorArchitecture=\"" + m_arch +
           "\" publicKeyToken=\"31bf3856ad364e35\" language=\"neutral\" versionScope=\"" +
           versionScope +
           "\" xmlns:wcm=\"http://schemas.microsoft.com/WMIConfig/2002/State\" "
           "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\">";
}

} // namespace Collection
