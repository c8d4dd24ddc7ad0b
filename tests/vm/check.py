#!/usr/bin/env python3
"""Compares what the product module answered inside the virtual server with
what the oracles (dmidecode, lspci, sysfs, the firmware image, the guest's own
restart) say, from the console logs that run.sh collected. Prints one line per
check, "CHECK <name> PASS|FAIL expected=<...> actual=<...>", and exits 1 when
a check fails or a section it needs is missing."""

import argparse
import json
import os
import re
import sys
import xml.etree.ElementTree as ElementTree

STORAGE_CLASSES = {"0100", "0101", "0104", "0105", "0106", "0107", "0c04"}
failures = 0


def check(name, expected, actual):
    global failures
    passed = expected == actual and expected not in ("", None)
    failures += not passed
    print(f"CHECK {name} {'PASS' if passed else 'FAIL'} expected={expected} actual={actual}")


class Boot:
    """One boot's console: the sections between "@@BEGIN" and "@@END", the
    marker lines, and QEMU's exit status."""

    def __init__(self, work, name):
        self.name = name
        with open(os.path.join(work, f"{name}.log"), errors="replace") as log:
            self.lines = [line.rstrip("\r\n").replace("\r", "") for line in log]
        with open(os.path.join(work, f"{name}.status")) as status:
            self.status = int(status.read())
        self.sections = {}
        current = None
        for line in self.lines:
            if line.startswith("@@BEGIN "):
                current = line.split(" ", 1)[1]
                body = []
            elif line.startswith("@@END ") and current is not None:
                self.sections[current] = "\n".join(body).strip("\n")
                current = None
            elif current is not None:
                body.append(line)

    def section(self, name):
        return self.sections.get(name)

    def has(self, text):
        return any(text in line for line in self.lines)


def json_answer(text):
    try:
        return json.loads(text)
    except (TypeError, ValueError):
        return {}


def dmi_record(text, offset):
    """The string that the byte at `offset` of a record dumped by dmidecode -u
    points to, decoded from the dump's bytes (each string's bytes end with 00
    and are followed by one line of the string as text)."""
    if not text:
        return None
    data, strings, pending, part, skip = [], [], [], None, False
    for line in text.splitlines():
        stripped = line.strip()
        if stripped == "Header and Data:":
            part = "data"
        elif stripped == "Strings:":
            part = "strings"
        elif part == "data" and stripped:
            data.extend(int(byte, 16) for byte in stripped.split())
        elif part == "strings" and stripped:
            if skip:
                skip = False
                continue
            pending.extend(int(byte, 16) for byte in stripped.split())
            if pending[-1] == 0:
                strings.append(bytes(pending[:-1]).decode("latin-1"))
                pending, skip = [], True
    if offset >= len(data) or not 0 < data[offset] <= len(strings):
        return None
    return strings[data[offset] - 1]


def total_memory(text):
    total = 0
    for device in (text or "").split("\n\n"):
        size = re.search(r"^\s*Size: (\d+) (MB|GB)", device, re.M)
        if size and not re.search(r"^\s*Type: Flash", device, re.M):
            total += int(size.group(1)) * (1024 if size.group(2) == "GB" else 1)
    return str(total)


def check_hardware(boot, wd100):
    answer = json_answer(boot.section("hardware"))
    check(f"{boot.name}.hardware.ErrorCode", 0, answer.get("ErrorCode"))
    check(f"{boot.name}.hardware.EVSupport", "No", answer.get("EVSupport"))
    check(f"{boot.name}.hardware.WD100Support", wd100, answer.get("WD100Support"))
    return answer


def check_smbios(boot, answer):
    for key, keyword in [("ROMName", "bios-version"), ("ROMDate", "bios-release-date"),
                         ("ProductName", "system-product-name"),
                         ("SerialNumber", "system-serial-number"),
                         ("AssetTag", "chassis-asset-tag")]:
        check(f"hardware.{key}", boot.section(f"dmidecode.{keyword}"), answer.get(key))
    check("hardware.RedundantROMDate", dmi_record(boot.section("dmidecode.193"), 5),
          answer.get("RedundantROMDate"))
    system_id = dmi_record(boot.section("dmidecode.195"), 4)
    check("hardware.SystemID", system_id, answer.get("SystemID"))
    check("hardware.ServerID", system_id and system_id[-4:], answer.get("ServerID"))
    check("hardware.TotalRAM", total_memory(boot.section("dmidecode.17")), answer.get("TotalRAM"))


def lspci_functions(text):
    functions = []
    for record in (text or "").split("\n\n"):
        fields = dict(line.split(":\t", 1) for line in record.splitlines() if ":\t" in line)
        if "Slot" in fields:
            functions.append(fields)
    return functions


def subsystems(text):
    """Subsystem vendor and subsystem ID of every function, "%04X%04X", from
    the configuration-space dump of lspci -x (offset 0x2C)."""
    found, address = {}, None
    for line in (text or "").splitlines():
        header = re.match(r"[0-9a-f]{4}:([0-9a-f]{2}:[0-9a-f]{2}\.[0-7]) ", line)
        if header:
            address = header.group(1)
        elif line.startswith("20:") and address:
            raw = [int(byte, 16) for byte in line.split()[1:]]
            found[address] = f"{raw[13]:02X}{raw[12]:02X}{raw[15]:02X}{raw[14]:02X}"
    return found


def expected_controllers(boot):
    """Storage functions from lspci, each with the disks that sysfs places
    below it: "/dev/<name>" and the size in bytes, removable media left out."""
    disks = {}
    for line in (boot.section("blocks") or "").splitlines():
        name, path, sectors, removable = line.split()
        owners = re.findall(r"/0000:([0-9a-f]{2}:[0-9a-f]{2}\.[0-7])/", path)
        if owners and removable == "0" and int(sectors) > 0:
            node = "/dev/" + name.replace("!", "/")
            disks.setdefault(owners[-1], []).append(f"{node}:{int(sectors) * 512}")
    controllers = {}
    subsystem = subsystems(boot.section("lspci.config"))
    for function in lspci_functions(boot.section("lspci")):
        pci_class = function["Class"].lower()
        if pci_class not in STORAGE_CLASSES:
            continue
        address = function["Slot"].split(":", 1)[1].lower()
        controllers[address.upper()] = describe(
            function["Vendor"], function["Device"], pci_class[:2], pci_class[2:],
            subsystem.get(address), sorted(disks.get(address, [])))
    return controllers


def describe(vendor, device, base_class, subclass, subsystem, disks):
    return (f"vendor={vendor.upper()} device={device.upper()} class={base_class.upper()}"
            f"/{subclass.upper()} subsystem={subsystem} disks={','.join(disks)}")


def check_inventory(name, document, expected):
    try:
        root = ElementTree.fromstring(document or "")
    except ElementTree.ParseError as error:
        check(f"{name}.document", "an AllStorage document", f"unreadable ({error})")
        return
    devices = root.findall("PCIDevice")
    check(f"{name}.PCIDeviceCount", str(len(expected)), root.get("PCIDeviceCount"))
    actual, ranks = {}, []
    for device in devices:
        address = f"{device.get('Bus')}:{device.get('Device')}.{int(device.get('Function'), 16)}"
        disks = device.findall("BlockDevice")
        actual[address] = describe(
            device.get("VendorID"), device.get("DeviceID"), device.get("ClassCode"),
            device.get("SubClassCode"), device.get("SubsystemID"),
            sorted(f"{disk.get('DeviceNode')}:{disk.get('Size')}" for disk in disks))
        ranks.append(f"{device.get('Index')}/{device.get('BootOrder')}/{device.get('Slot')}")
        numbering = [f"{disk.get('Index')}/{disk.get('DriveNumber')}/{disk.get('Removable')}"
                     for disk in disks]
        check(f"{name}.{address}.disk-numbering",
              " ".join(f"{i}/{i + 1}/0" for i in range(len(disks))), " ".join(numbering))
        check(f"{name}.{address}.BlockDeviceCount", str(len(disks)), device.get("BlockDeviceCount"))
    for address in sorted(set(expected) | set(actual)):
        check(f"{name}.{address}", expected.get(address, "(not listed)"),
              actual.get(address, "(not listed)"))
    # Without a routing table every controller has slot 255; ranks follow the
    # list.
    check(f"{name}.index/bootorder/slot",
          " ".join(f"{i}/{i}/255" for i in range(len(devices))), " ".join(ranks))


def check_storage(boot):
    expected = expected_controllers(boot)
    check("allstorage.answer", '{"ErrorCode":0}', boot.section("allstorage.answer"))
    check_inventory("allstorage.page", boot.section("allstorage.document"), expected)
    check_inventory("allstorage.startup", boot.section("startup.allstorage"), expected)
    nvme = [f["Slot"] for f in lspci_functions(boot.section("lspci")) if f["Class"] == "0108"]
    check("allstorage.nvme-present-in-lspci", "1", str(len(nvme)))
    cdrom = [line.split()[0] for line in (boot.section("blocks") or "").splitlines()
             if line.split()[-1] == "1"]
    check("allstorage.removable-present-in-sysfs", "sr0", " ".join(cdrom))


def current_order(text):
    return json.dumps(json_answer(text).get("CurrentOrder"))


BOOT_DEVICES = {0: "default", 1: "pxe", 2: "hd", 5: "cdrom", 6: "fset", 15: "floppy"}


def controller_order(text):
    """The boot device that the management controller's boot flags name, as
    ipmitool read them: the last line of bytes holds the parameter version,
    the selector and boot-flag data bytes 1..5. An answer without data byte 2
    names no device: then the pages report the default order. QEMU 7.2's
    simulated controller keeps no boot flags: it rejects Set System Boot
    Options as an invalid command and answers command 09h with two bytes (its
    restart-cause reply)."""
    rows = [line.split() for line in (text or "").splitlines()
            if re.fullmatch(r"( [0-9a-f]{2})+", line)]
    if not rows:
        return None
    data = rows[-1]
    selector = (int(data[3], 16) >> 2) & 0x0F if len(data) >= 4 else 0
    return json.dumps([BOOT_DEVICES.get(selector, f"selector {selector}")])


def check_boot_order(boot):
    fixed = ('{"ErrorCode":0,"Order":[{"Name":"Default","Value":"Default"},'
             '{"Name":"A:","Value":"floppy"},{"Name":"C:","Value":"hd"},'
             '{"Name":"CD","Value":"cdrom"},{"Name":"USB","Value":"usb"},'
             '{"Name":"PXE","Value":"pxe"}],"CurrentOrder":[')
    query = boot.section("bootorder.query") or ""
    check("setbootorder.query.order-list", fixed, query[:len(fixed)])
    flags = (boot.section("bootflags.query") or "").splitlines()
    print(f"NOTE management controller's boot flags (ipmitool): {flags[-1:]}")
    check("setbootorder.query", controller_order(boot.section("bootflags.query")),
          current_order(query))
    for step in ["cdrom", "usb", "default"]:
        answer = json_answer(boot.section(f"bootorder.{step}"))
        check(f"setbootorder.perform.{step}.ErrorCode", 0, answer.get("ErrorCode"))
        check(f"setbootorder.perform.{step}.CurrentOrder",
              controller_order(boot.section(f"bootflags.{step}")),
              json.dumps(answer.get("CurrentOrder")))
    check("setbootorder.query.after-cdrom", controller_order(boot.section("bootflags.cdrom")),
          current_order(boot.section("bootorder.query.cdrom")))


def firmware_directories(path):
    """Physical addresses of the BIOS32 directory headers in the firmware
    image (its last 128 KiB appear at 0xE0000); the ROM fills in the entry
    point and the checksum when it starts, so only the fixed fields count."""
    with open(path, "rb") as image:
        top = image.read()[-0x20000:]
    return [0xE0000 + offset for offset in range(0, len(top), 16)
            if top[offset:offset + 4] == b"_32_" and top[offset + 8] == 0 and top[offset + 9] == 1]


def check_rom(boot, firmware):
    values = dict(line.split("=", 1) for line in (boot.section("rom") or "").splitlines()
                  if "=" in line)
    directories = firmware_directories(firmware)
    check("rom.directories", str(len(directories)), values.get("directories"))
    found = values.get("directory.0", "").split()
    check("rom.find_bios32_call.position", f"0x{directories[0]:05x}" if directories else None,
          found[0] if found else None)
    entry = int(found[1].split("=")[1], 16) if len(found) > 1 else 0
    check("rom.find_bios32_call.entry-in-bios-segment", True, 0xF0000 <= entry < 0x100000)
    last_bus = max((int(f["Slot"].split(":")[1], 16)
                    for f in lspci_functions(boot.section("lspci"))), default=None)
    check("rom.pci-bios.present.status", "0", values.get("present.status"))
    check("rom.pci-bios.present.signature", "PCI ", values.get("present.signature"))
    check("rom.pci-bios.present.last-bus", str(last_bus), values.get("present.last_bus"))
    check("rom.find_call.pci-entry", values.get("present.entry"), values.get("pci.entry"))
    check("rom.find_ev_call.no-service", "0x00000", values.get("ev.entry"))
    # SeaBIOS offers only the standard function numbers: the vendor form 81h
    # comes back with carry set and AH 81h (function not supported).
    check("rom.do_rom_call.carry-negates-status", "-129", values.get("present81.status"))
    check("rom.pci_bios_present.vendor-form", "0", values.get("pci_bios_present"))


def check_restart(boot, how):
    check(f"{boot.name}.restart.requested", True, boot.has(f"@@RESTART {how}"))
    check(f"{boot.name}.no-kernel-panic", False, boot.has("Kernel panic"))
    check(f"{boot.name}.restart.page-did-not-return", False, boot.has("@@RESTART-RETURNED"))
    # The kernel says this only when the reboot call restarts the machine; the
    # management controller's chassis reset comes first on a cold restart.
    check(f"{boot.name}.restart.by-reboot-call", how == "warm",
          boot.has("reboot: Restarting system"))
    check(f"{boot.name}.qemu-ended", "0", str(boot.status))


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--work", required=True)
    parser.add_argument("--firmware", required=True)
    arguments = parser.parse_args()

    main_boot = Boot(arguments.work, "main")
    check("main.ready", True, main_boot.has("@@READY main"))
    check_smbios(main_boot, check_hardware(main_boot, "Yes"))
    check_storage(main_boot)
    check_boot_order(main_boot)
    check_rom(main_boot, arguments.firmware)
    check_restart(main_boot, "warm")

    check_restart(Boot(arguments.work, "cold"), "cold")

    nobmc = Boot(arguments.work, "nobmc")
    check_hardware(nobmc, "No")
    check("nobmc.setbootorder.query", '{"ErrorCode":1}', nobmc.section("bootorder.query"))
    check("nobmc.finished", True, nobmc.has("@@DONE nobmc"))
    check("nobmc.no-kernel-panic", False, nobmc.has("Kernel panic"))
    check("nobmc.qemu-ended", "0", str(nobmc.status))

    print(f"virtual-server checks: {failures} failed")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
