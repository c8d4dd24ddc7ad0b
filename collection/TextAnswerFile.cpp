#include "collection/TextAnswerFile.h"

#include "collection/AnswerFileText.h"

namespace Collection
{
namespace
{

unsigned const EntryIndent = 3;

char const* const dataEntries[] = {
    "UnattendedInstall=yes", "msdosinitiated=1", "floppyless=1",
    "OriSrc=A:\\i386",       "OriTyp=5",         "EMSSkipUnattendProcessing=1",
};

char const* const displayEntries[] = {
    "AutoConfirm=1", "BitsPerPel=16",   "ConfigureAtLogon=0",
    "VRefresh=60",   "Xresolution=800", "Yresolution=600",
};

char const* const oemAdsEntries[] = {"Logo=Velmar.bmp"};

char const* const guiUnattendedEntries[] = {"OEMSkipWelcome=1"};

char const* const unattendedEntries[] = {
    "DriverSigningPolicy=Ignore",
    "NtUpgrade=No",
    "OemFilesPath=C:",
    "OemPnPDriversPath=drivers\\net;drivers\\scsi",
    "OemPreinstall=Yes",
    "OemSkipEula=Yes",
    "OverwriteOemFilesOnUpgrade=No",
    "TargetPath=\\Windows",
    "DisableVirtualOemDevices=yes",
    "UnattendMode=DefaultHide",
    "Win9xUpgrade=No",
    "WaitForReboot=No",
};

// The commands that run the second disc's setup, each quoted as one command.
char const* const secondDiscCommands[] = {
    "\"reg add HKLM\\Software\\Microsoft\\Windows\\CurrentVersion\\Setup /v SourcePath /t REG_SZ "
    "/d D:\\ /f\"",
    "\"reg add HKLM\\Software\\Microsoft\\Windows\\CurrentVersion\\Setup /v ServicePackSourcePath "
    "/t REG_SZ /d D:\\ /f\"",
    "\"C:\\Windows\\system32\\cd2chain.exe\"",
};

char const rotateCommand[] = "\"reg add HKLM\\Software\\Microsoft\\Windows\\CurrentVersion\\Run "
                             "/v DiscAutomate /t REG_SZ /d C:\\automate.vbs /f\"";

// The value of `key` as it is written: a carriage return or line feed in it
// becomes a blank, since it would end the entry and let the rest of the value
// stand as an entry or a section of its own. Decisions that compare a value
// read the value as typed instead.
Common::istring written(UnattendSettings const& settings, char const* key)
{
    Common::string value(settings.value(key));
    return Common::Replace(Common::Replace(value, "\r", " "), "\n", " ");
}

template <unsigned N> void entries(AnswerFileText& out, char const* const (&texts)[N])
{
    for (unsigned i = 0; i < N; ++i)
        out.line(EntryIndent, texts[i]);
}

// `prefix` + the value of `key`, when the key is present.
void entryIfPresent(AnswerFileText& out, UnattendSettings const& settings, char const* key,
                    char const* prefix)
{
    if (settings.has(key))
        out.line(EntryIndent, prefix + written(settings, key));
}

// Like entryIfPresent, with the value in double quotes.
void quotedEntryIfPresent(AnswerFileText& out, UnattendSettings const& settings, char const* key,
                          char const* prefix)
{
    if (settings.has(key))
        out.line(EntryIndent, prefix + written(settings, key) + "\"");
}

void writeGuiUnattended(AnswerFileText& out, UnattendSettings const& settings)
{
    out.line(0, "[GuiUnattended]");
    entries(out, guiUnattendedEntries);
    out.line(EntryIndent, "OEMSkipRegional=" + written(settings, "SkipRegional"));
    if (settings.has("AutoLogonCount"))
    {
        out.line(EntryIndent, "AutoLogon=Yes");
        out.line(EntryIndent, "AutoLogonCount=" + written(settings, "AutoLogonCount"));
    }
    entryIfPresent(out, settings, "TimeZone", "TimeZone=");
    quotedEntryIfPresent(out, settings, "AdminPassword", "AdminPassword=\"");
}

void writeIdentification(AnswerFileText& out, UnattendSettings const& settings)
{
    out.line(0, "[Identification]");
    if (settings.has("JoinDomain"))
    {
        Common::istring password = written(settings, "DomainAdminPassword");
        out.line(EntryIndent, "JoinDomain=" + written(settings, "JoinDomain"));
        out.line(EntryIndent, "DomainAdmin=" + written(settings, "DomainAdmin"));
        // The password goes in twice, bare and then quoted. The doubling is
        // part of the format: keep both lines.
        out.line(EntryIndent, "DomainAdminPassword=" + password);
        out.line(EntryIndent, "DomainAdminPassword=\"" + password + "\"");
    }
    else
        entryIfPresent(out, settings, "JoinWorkgroup", "JoinWorkgroup=");
}

void writeGuiRunOnce(AnswerFileText& out, UnattendSettings const& settings)
{
    out.line(0, "[GuiRunOnce]");
    if (settings.has("R2Run") && settings.value("R2Run") == "1")
        entries(out, secondDiscCommands);
    out.line(EntryIndent, "\"C:\\guicmd.exe\"");
    if (settings.has("Rotate"))
        out.line(EntryIndent, rotateCommand);
}

void writeUnattended(AnswerFileText& out, UnattendSettings const& settings)
{
    if (settings.has("MassStorageDriver"))
    {
        out.line(0, "[MassStorageDrivers]");
        out.line(EntryIndent, written(settings, "MassStorageDriver"));
    }
    out.line(0, "[Unattended]");
    entries(out, unattendedEntries);
    entryIfPresent(out, settings, "ExtendOemPartition", "ExtendOemPartition=");
    entryIfPresent(out, settings, "FileSystem", "FileSystem=");
}

void writeLicensing(AnswerFileText& out, UnattendSettings const& settings)
{
    out.line(0, "[LicenseFilePrintData]");
    entryIfPresent(out, settings, "AutoMode", "AutoMode=");
    // A connection count only means something when licensing per server.
    if (settings.has("AutoUsers") && settings.has("AutoMode") &&
        settings.value("AutoMode") == "perserver")
        out.line(EntryIndent, "AutoUsers=" + written(settings, "AutoUsers"));
}

void writeUserData(AnswerFileText& out, UnattendSettings const& settings)
{
    out.line(0, "[UserData]");
    out.line(EntryIndent, "ComputerName=" + written(settings, "ComputerName"));
    quotedEntryIfPresent(out, settings, "FullName", "FullName=\"");
    quotedEntryIfPresent(out, settings, "OrganizationName", "OrgName=\"");
    quotedEntryIfPresent(out, settings, "ProductID", "ProductID=\"");
}

void writeSNMP(AnswerFileText& out, UnattendSettings const& settings)
{
    bool snmp = settings.has("SNMPMonitor");
    out.line(0, "[NetOptionalComponents]");
    if (snmp)
    {
        out.line(EntryIndent, "SNMP=\"1\"");
        out.line(EntryIndent, "WBEMSNMP=\"1\"");
    }
    out.line(0, "[SNMP]");
    if (!snmp)
        return;
    Common::istring monitor = written(settings, "SNMPMonitor");
    if (settings.has("SNMPControl"))
        out.line(EntryIndent, "Accept_CommunityName=" + monitor + ":Read_Only, " +
                                  written(settings, "SNMPControl") + ":Read_Create");
    else // The blank before the line end is part of the format.
        out.line(EntryIndent, "Accept_CommunityName=" + monitor + ":Read_Only ");
    out.line(EntryIndent, "Community_Name=\"" + monitor + "\"");
    entryIfPresent(out, settings, "SNMPTraps", "Traps=");
}

} // namespace

Common::istring renderTextAnswerFile(UnattendSettings const& settings)
{
    AnswerFileText out;
    out.line(0, "[Data]");
    entries(out, dataEntries);
    out.line(0, "[Display]");
    entries(out, displayEntries);
    out.line(0, "[Networking]");
    out.line(0, "[OEM_Ads]");
    entries(out, oemAdsEntries);
    writeGuiUnattended(out, settings);
    writeIdentification(out, settings);
    writeGuiRunOnce(out, settings);
    writeUnattended(out, settings);
    writeLicensing(out, settings);
    writeUserData(out, settings);
    writeSNMP(out, settings);
    return out.text();
}

} // namespace Collection
