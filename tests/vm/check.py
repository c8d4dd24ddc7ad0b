#!/usr/bin/env python3
"""Compares what the product module answered inside the virtual server with
what the oracles (dmidecode, lspci, sysfs, the firmware image, ipmitool, the
simulated management controller, the guest's own restart) say, from the
console logs that run.sh collected. Prints one line per check, "CHECK <name> PASS|FAIL expected=<...> actual=<...>", and exits 1 when
a check fails or a section it needs is missing."""

import argparse
import json
import os
import re
import sys
import xml.etree.ElementTree as ElementTree

import verdict
from console import Boot, ControllerReadings, json_answer
from controller_checks import check_controller_start
from ipmitool_text import boot_parameter_data
from verdict import check
from wd100_checks import check_wd100

STORAGE_CLASSES = {"0100", "0101", "0104", "0105", "0106", "0107", "0c04"}


def hex_text(data):
    return " ".join(f"{byte:02x}" for byte in data)


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


# The boot devices that guest_init.sh sets with ipmitool, then the boot
# orders that it sets through the page, one Perform each, in its order.
IPMITOOL_DEVICES = {"cdrom": 5, "pxe": 1, "bios": 6, "disk": 2}
BOOT_ORDER_STEPS = ["cdrom", "usb:cdrom", "pxe", "Default"]
# Boot device selectors (bits 5..2 of boot-flag data byte 2) of the page's
# device names: "usb" boots as a hard disk; "Default" clears the override.
SELECTORS = {"floppy": 15, "hd": 2, "usb": 2, "cdrom": 5, "pxe": 1, "fset": 6, "default": 0}
# What the page reads back for a selector.
SELECTOR_NAMES = {15: "floppy", 2: "hd", 5: "cdrom", 1: "pxe", 6: "fset", 0: "default"}


def boot_flags_request(step):
    """Set System Boot Options for a Perform of `step` (names joined by ":"):
    parameter 5, then boot-flag data bytes 1..5: valid and persistent, the
    first name's selector shifted left by 2, three zero bytes."""
    selector = SELECTORS[step.split(":")[0].lower()]
    return [0x05, 0xC0, selector << 2, 0x00, 0x00, 0x00]


# The restart's one-time target PXE: valid for the next boot only, selector 1.
RESTART_REQUEST = [0x05, 0x80, 1 << 2, 0x00, 0x00, 0x00]
# The firmware-setup reset without ROM variables: valid for the next boot,
# clear CMOS.
CLEAR_CMOS_REQUEST = [0x05, 0x80, 0x80, 0x00, 0x00, 0x00]


class SimulatedController:
    """What ipmi_sim does with parameter 5 of Set System Boot Options: it
    takes a request of the parameter and five boot-flag data bytes and keeps
    the boot device (selectors 0, 1, 2, 5 and 6); it refuses a shorter request
    with completion code C7h (request data length invalid) and keeps what it
    had. Get answers parameter version 1, parameter 5, data byte 1 as zero,
    the device in data byte 2, zeros."""

    def __init__(self):
        self.selector = 0

    def set(self, request):
        if len(request) < 6:
            return "c7"
        self.selector = (request[2] >> 2) & 0x0F
        return "00"

    def get(self):
        return hex_text([1, 5] + self.data())

    def data(self):
        return [0, self.selector << 2, 0, 0, 0]


def flags_read(text):
    """The last line of data bytes that ipmitool printed, or its error line."""
    lines = [line.strip() for line in (text or "").splitlines() if line.strip()]
    rows = [line for line in lines if re.fullmatch(r"([0-9a-f]{2} ?)+", line)]
    return rows[-1] if rows else (lines[-1] if lines else None)


def unescape(raw):
    """A message as ipmi_sim sent it on QEMU's connection: without the end
    mark A0h, each byte after the escape AAh with bit 4 cleared."""
    data, escaped = [], False
    for byte in raw:
        if escaped:
            data.append(byte & ~0x10)
            escaped = False
        elif byte == 0xAA:
            escaped = True
        elif byte != 0xA0:
            data.append(byte)
    return data


def boot_option_sets(work):
    """Each Set System Boot Options (network function 0, command 08h) of the
    boot flags (parameter 5) that reached ipmi_sim, from its message log: the
    request bytes and the completion code it answered, both as hex text. On QEMU's connection a
    message is the sequence number, network function and LUN, the command,
    the data and a checksum."""
    try:
        with open(os.path.join(work, "ipmi_sim", "ipmi_sim.log"), errors="replace") as log:
            # Its console ends lines with "\n\r": blank lines in between.
            lines = [line for line in log.read().split("\n") if line.strip()]
    except OSError:
        return []
    requests, answers = [], {}
    for heading, body in zip(lines, lines[1:]):
        try:
            message = [int(byte, 16) for byte in body.split()]
        except ValueError:
            continue
        if (heading.startswith("Raw serial receive:") and message[1:3] == [0x00, 0x08]
                and len(message) > 4 and message[3] & 0x7F == 0x05):
            requests.append((message[0], message[3:-1]))
        elif heading.startswith("Raw serial send:"):
            message = unescape(message)
            if message[1:3] == [0x04, 0x08] and len(message) > 3:
                answers[message[0]] = f"{message[3]:02x}"
    return [(hex_text(request), answers.get(sequence))
            for sequence, request in requests]


def check_boot_order(boot, work, readings):
    fixed = ('{"ErrorCode":0,"Order":[{"Name":"Default","Value":"Default"},'
             '{"Name":"A:","Value":"floppy"},{"Name":"C:","Value":"hd"},'
             '{"Name":"CD","Value":"cdrom"},{"Name":"USB","Value":"usb"},'
             '{"Name":"PXE","Value":"pxe"}],"CurrentOrder":[')
    query = boot.section("bootorder.query") or ""
    check("setbootorder.query.order-list", fixed, query[:len(fixed)])
    controller = SimulatedController()
    check("setbootorder.query.bootflags", controller.get(),
          flags_read(boot.section("bootflags.query")))
    check("setbootorder.query.CurrentOrder", '["default"]', current_order(query))
    # ipmitool's own requests carry five boot-flag data bytes: the controller
    # keeps each device, and the page reads it.
    sets = boot_option_sets(work)
    for number, (device, selector) in enumerate(IPMITOOL_DEVICES.items()):
        controller.selector = selector
        answer = sets[number][1] if number < len(sets) else None
        check(f"setbootorder.ipmitool.{device}.controller-answer", "00", answer)
        check(f"setbootorder.ipmitool.{device}.bootflags", controller.get(),
              flags_read(boot.section(f"bootflags.ipmitool.{device}")))
        check(f"setbootorder.ipmitool.{device}.query.CurrentOrder",
              json.dumps([SELECTOR_NAMES[selector]]),
              current_order(boot.section(f"bootorder.query.ipmitool.{device}")))
    sets = sets[len(IPMITOOL_DEVICES):]
    for number, step in enumerate(BOOT_ORDER_STEPS):
        request = boot_flags_request(step)
        expected_answer = controller.set(request)
        received, answer = sets[number] if number < len(sets) else (None, None)
        name = json.dumps([SELECTOR_NAMES[controller.selector]])
        performed = json_answer(boot.section(f"bootorder.{step}"))
        check(f"setbootorder.perform.{step}.ErrorCode", 0, performed.get("ErrorCode"))
        check(f"setbootorder.perform.{step}.request",
              hex_text(request), received)
        check(f"setbootorder.perform.{step}.controller-answer", expected_answer, answer)
        check(f"setbootorder.perform.{step}.bootflags", controller.get(),
              flags_read(boot.section(f"bootflags.{step}")))
        check(f"setbootorder.perform.{step}.lan.bootparam", hex_text(controller.data()).replace(" ", ""),
              boot_parameter_data(readings.reading(f"bootorder.{step}", "bootflags")))
        check(f"setbootorder.perform.{step}.CurrentOrder", name,
              json.dumps(performed.get("CurrentOrder")))
        check(f"setbootorder.perform.{step}.query.CurrentOrder", name,
              current_order(boot.section(f"bootorder.query.{step}")))
    # Then the firmware-setup reset's clear-CMOS request and the restart's
    # one-time target, and nothing else.
    later = sets[len(BOOT_ORDER_STEPS):] + [(None, None)] * 2
    check("fsetreset.perform.answer", '{"ErrorCode":0}', boot.section("fsetreset"))
    check("fsetreset.clear-cmos.request", hex_text(CLEAR_CMOS_REQUEST), later[0][0])
    check("reboot.target-PXE.request", hex_text(RESTART_REQUEST), later[1][0])
    check("boot-flags.no-further-sets", len(BOOT_ORDER_STEPS) + 2, len(sets))


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
    readings = ControllerReadings(arguments.work)
    check("main.ready", True, main_boot.has("@@READY main"))
    check("main.controller-readings-answered", False, main_boot.has("@@NO-READING"))
    check_controller_start(readings)
    check_smbios(main_boot, check_hardware(main_boot, "Yes"))
    check_storage(main_boot)
    check_boot_order(main_boot, arguments.work, readings)
    check_wd100(main_boot, readings)
    check_rom(main_boot, arguments.firmware)
    check_restart(main_boot, "warm")

    check_restart(Boot(arguments.work, "cold"), "cold")

    nobmc = Boot(arguments.work, "nobmc")
    check_hardware(nobmc, "No")
    check("nobmc.setbootorder.query", '{"ErrorCode":1}', nobmc.section("bootorder.query"))
    check("nobmc.finished", True, nobmc.has("@@DONE nobmc"))
    check("nobmc.no-kernel-panic", False, nobmc.has("Kernel panic"))
    check("nobmc.qemu-ended", "0", str(nobmc.status))

    print(f"virtual-server checks: {verdict.failures} failed")
    return 1 if verdict.failures else 0


if __name__ == "__main__":
    sys.exit(main())
