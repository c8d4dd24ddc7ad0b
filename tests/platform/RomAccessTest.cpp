#include "platform/RomAccess.h"

#include "sim/RomServices.h"
#include "tests/support/SimulatedServer.h"

#include <cstring>
#include <string>

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;
namespace Rom = Sim::RomServices;

namespace
{
// A ROM set up by romcall_init and released at the end of the scope.
struct OpenRom
{
    explicit OpenRom(unsigned long flags = 0) : info(), status(romcall_init(&info, flags)) {}
    ~OpenRom() { romcall_fini(&info); }
    unsigned char* at(unsigned long physical) const { return info.base + physical - 0xA0000; }

    rominfo_t info;
    int status;
};

// A service that turns every register of the block into another value, so
// that each one is seen going in and coming out.
void scramble(RomCallRegisters& registers)
{
    std::uint32_t eax = registers.eax;
    registers.eax = registers.ebx + 1;
    registers.ebx = registers.ecx + 2;
    registers.ecx = registers.edx + 3;
    registers.edx = registers.esi + 4;
    registers.esi = registers.edi + 5;
    registers.edi = eax + 6;
    registers.eflags |= (eax & 0x100) != 0 ? 1u : 0u; // carry on request
}

RomCallRegisters scrambledCall(rominfo_t& rom, std::uint32_t entry, int mode, std::uint32_t eax,
                               int& status)
{
    RomCallRegisters block = {};
    block.eax = eax;
    block.ebx = 0x22222222;
    block.ecx = 0x33333333;
    block.edx = 0x44444444;
    block.esi = 0x55555555;
    block.edi = 0x66666666;
    status = do_rom_call(&rom, &block, rom.base + entry - 0xA0000, mode);
    return block;
}
} // namespace

TEST(RomCall, RunsTheRomsCodeWithEveryRegisterInAndOutAndPeeksOnlyWithinTheRom)
{
    Sim::Machine machine;
    Rom::addStandardRom(machine);
    machine.addRomService(0xE3000, Sim::RomReturn::FarCall, scramble);
    machine.addRomService(0xE3100, Sim::RomReturn::Interrupt, scramble);
    machine.memory().write(0xFFFF0, std::string("0123456789ABCDEF"));
    onSimulatedServer(machine,
                      [](Sim::Machine&)
                      {
                          OpenRom rom;
                          ASSERT_EQ(0, rom.status);
                          for (int mode = 1; mode <= 2; ++mode)
                          {
                              int status = 0;
                              std::uint32_t entry = mode == 1 ? 0xE3100 : 0xE3000;
                              RomCallRegisters out =
                                  scrambledCall(rom.info, entry, mode, 0x11110011, status);
                              EXPECT_EQ(0x22222223u, out.eax) << mode;
                              EXPECT_EQ(0x33333335u, out.ebx);
                              EXPECT_EQ(0x44444447u, out.ecx);
                              EXPECT_EQ(0x55555559u, out.edx);
                              EXPECT_EQ(0x6666666Bu, out.esi);
                              EXPECT_EQ(0x11110017u, out.edi);
                              EXPECT_EQ(0u, out.eflags & 1u);
                              EXPECT_EQ(out.ds, out.es);
                              EXPECT_EQ(0x22, status) << "AH without carry";
                          }
                          int status = 0;
                          RomCallRegisters out = scrambledCall(rom.info, 0xE3100, 1, 0x11110100, status);
                          EXPECT_EQ(1u, out.eflags & 1u);
                          EXPECT_EQ(-0x22, status) << "carry turns the status negative";
                          scrambledCall(rom.info, 0xE3004, 2, 0x11110011, status);
                          EXPECT_EQ(-0x86, status) << "no service there";

                          unsigned char bytes[32];
                          std::memset(bytes, 0x5A, sizeof bytes);
                          EXPECT_EQ(-1, rom_peek(&rom.info, 0x9FFFF, bytes, 1));
                          EXPECT_EQ(-1, rom_peek(&rom.info, 0x100000, bytes, 1));
                          EXPECT_EQ(-1, rom_peek(&rom.info, 0xFFFF0, bytes, 32)) << "past 0xFFFFF";
                          EXPECT_EQ(0x5A, bytes[0]) << "nothing copied";
                          EXPECT_EQ(0, rom_peek(&rom.info, 0xFFFF0, bytes, 16));
                          EXPECT_EQ("0123456789ABCDEF", std::string(reinterpret_cast<char*>(bytes), 16));
                          EXPECT_EQ(0, rom_peek(&rom.info, 0xA0000, bytes, 0));
                          EXPECT_EQ(-1, rom_peek(&rom.info, 0xA0000, bytes, -1));
                      });
}

TEST(RomCall, FindsTheEntryPointsAndThePciBios)
{
    Sim::Machine machine;
    Rom::addStandardRom(machine);
    // Revision 1, and a bad checksum: neither is a directory the scan takes.
    Rom::addServiceDirectory(machine, 0xD0000, {{Rom::kEnvironmentService, 0xE3000}}, 1);
    Rom::addServiceDirectory(machine, 0xD0100, {{Rom::kEnvironmentService, 0xE3000}});
    machine.memory().write(0xD010A, std::string("\x01", 1));
    onSimulatedServer(
        machine,
        [](Sim::Machine&)
        {
            OpenRom rom;
            ASSERT_EQ(0, rom.status);
            EXPECT_EQ(rom.at(Rom::kInterrupt15), rom.info.int15_entry);
            EXPECT_EQ(rom.at(Rom::kEnvironmentEntry), rom.info.ev_entry)
                << "offered by the second directory only";
            EXPECT_EQ(rom.at(Rom::kPciBios), rom.info.pci_entry);
            EXPECT_NE(0, rom.info.pci_present);

            unsigned long position = 0xA0000;
            EXPECT_EQ(rom.at(Rom::kFirstDirectory + 16), find_bios32_call(&rom.info, &position));
            EXPECT_EQ(Rom::kFirstDirectory, position);
            position += 16;
            EXPECT_EQ(rom.at(Rom::kSecondDirectory + 16), find_bios32_call(&rom.info, &position));
            position += 16;
            EXPECT_EQ(nullptr, find_bios32_call(&rom.info, &position));
            EXPECT_EQ(0x100000u, position);

            OpenRom none(ROMCALL_NO_INT15 | ROMCALL_NO_EV | ROMCALL_NO_PCI);
            EXPECT_EQ(nullptr, none.info.int15_entry) << "the flags skip their lookups";
            EXPECT_EQ(nullptr, none.info.ev_entry);
            EXPECT_EQ(nullptr, none.info.pci_entry);
        });
}

TEST(RomCall, AnEntryPointAboveOneMegabyteIsRejectedWithItsMessage)
{
    Sim::Machine machine;
    Rom::addStandardRom(machine);
    Rom::addServiceDirectory(machine, 0xD0000, {{Rom::kEnvironmentService, 0x100010}});
    onSimulatedServer(machine,
                      [](Sim::Machine&)
                      {
                          CaptureStderr();
                          OpenRom rom(ROMCALL_NO_EV | ROMCALL_NO_PCI);
                          EXPECT_EQ(nullptr, find_ev_call(&rom.info));
                          EXPECT_EQ("rom_call returned invalid entry point 0x100010\n",
                                    GetCapturedStderr());
                      });
}

TEST(RomCall, InitReportsWhatFailedAndFiniReleasesEverything)
{
    Sim::Machine noMemory;
    noMemory.faults().noPhysicalMemory = true;
    Sim::Machine noMapping;
    noMapping.faults().noMemoryMapping = true;
    for (auto* machine : {&noMemory, &noMapping})
        onSimulatedServer(*machine,
                          [](Sim::Machine& server)
                          {
                              CaptureStderr();
                              rominfo_t info = {};
                              EXPECT_EQ(-1, romcall_init(&info, 0));
                              EXPECT_EQ(0, romcall_fini(&info));
                              char const* failed = server.faults().noPhysicalMemory
                                                       ? "opening /dev/mem: "
                                                       : "mmaping /dev/mem: ";
                              EXPECT_EQ(0u, GetCapturedStderr().find(failed));
                              EXPECT_EQ(0, info.fd);
                          });

    Sim::Machine unsigned_;
    onSimulatedServer(unsigned_,
                      [](Sim::Machine&)
                      {
                          CaptureStderr();
                          rominfo_t info = {};
                          EXPECT_EQ(-1, romcall_init(&info, 0));
                          EXPECT_NE(nullptr, info.base) << "left for romcall_fini";
                          EXPECT_EQ(-1, check_for_velmar_ROM(&info));
                          EXPECT_EQ(0, romcall_fini(&info));
                          EXPECT_EQ(nullptr, info.base);
                          EXPECT_EQ(0, romcall_fini(&info)) << "a zeroed block is left alone";
                          EXPECT_EQ("Not a ZR Corvane Server!\n", GetCapturedStderr());
                      });
}
