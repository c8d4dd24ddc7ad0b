#pragma once

#include <string>

namespace Sim
{

class Machine;

// Builds a simulated server from an XML description (read with the
// project's own XML parser). The root element "Machine" holds, in any order:
//
//   <Smbios anchor="0xF0010" table="0xF1000">   records in table order:
//     <Bios vendor="" version="" date=""/>  <System manufacturer="" product=""
//     serial=""/>  <Chassis assetTag=""/>  <Processor manufacturer="" type="3"
//     status="0x41"/>  <MemoryDevice size="4096" type="0x18"/>
//     <RedundantRom date=""/>  <SystemId id=""/>
//   </Smbios>
//   <Signatures velmar="yes" nvram="yes"/>
//   <IplTable address="0xF4000"><Entry type="2" bus="" device="" function=""
//     description=""/></IplTable>
//   <Function bus="" device="" function="" vendor="" deviceId="" class=""
//     subclass="" subsystemVendor="" subsystemId="" procFileSize="256"/>
//   <Bridge bus="" device="" function="" secondary=""/>
//   <NvramController bus="" device="" function="" deviceId="0xA0F0"/>
//   <EmptyBus bus=""/>
//   <Routing><Line bus="" device="" function="" slot="" link="" bitmap=""/>
//     </Routing>
//   <Disk bus="" device="" function="" name="sda" bytes="" removable="no"
//     inBlockFolder="no"/>
//   <Rom>   a Corvane ROM (sim/RomServices.h, "VELMAR" included) holding:
//     <Variable name="RXHIPL" value="text"/> or, for binary content,
//     <Variable name="RXHIPL" bytes="0x00 0x01"/>  <Route bus="" device=""
//     function="" slot="" link="0x60" bitmap="0xDEB8"/>  (its routing table)
//   </Rom>
//   <ManagementController node="/dev/ipmi0" nodeAfterLoading="no" major=""
//     replyDelay="0" silent="no" users="10" powerRestorePolicy="1">
//     (sim/ManagementController.h; "major" is listed for "ipmidev" in
//     "/proc/devices", none when omitted; replyDelay in microseconds;
//     users: the number of user IDs; the policy 0 off, 1 previous, 2 on)
//     <User id="3" name="" password="" enabled="no" privilege="noaccess"/>
//       (privilege: user, operator, administrator or noaccess)
//     <Lan channel="1" ipSource="1" address="192.168.40.12"
//       mask="255.255.255.0" gateway="192.168.40.1" mac="02:1a:7e:00:00:01"
//       vlan="0" access="2"/>   (ipSource 1 static, 2 DHCP; access: the
//       channel access byte, 2 always available, 0 disabled)
//     <Sol enabled="yes" bitRate="10"/>   (bit rate code: 6 9600 bit/s ...
//       10 115200, 0 the serial port's default)
//   </ManagementController>
//   Without parts the controller has user 2 "admin", an enabled
//   administrator, and the LAN and SOL settings shown.
//   <Faults noPhysicalMemory="no" noMemoryMapping="no" noIOPrivilege="no"
//     noProcBusPci="no"/>
//
// Numbers are decimal or 0x-prefixed hexadecimal; flags are "yes" or "no".
// Omitted numbers are 0 unless shown above.
class MachineDescription
{
public:
    // False, with `error` saying what and where, for an unreadable file, an
    // unknown element, a malformed number or a disk name given twice;
    // `machine` may then be partly built.
    static bool Load(std::string const& path, Machine& machine, std::string& error);
    static bool Parse(std::string const& text, Machine& machine, std::string& error);
};

} // namespace Sim
