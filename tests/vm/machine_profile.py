#!/usr/bin/env python3
"""A machine profile (tests/vm/machines/*.machine) as QEMU's arguments.

Usage: machine_profile.py PROFILE --disks DIR       prints the arguments, one
                                                    per line, after creating
                                                    the disks (empty sparse
                                                    files) and the raw SMBIOS
                                                    records in DIR
       machine_profile.py PROFILE --block-devices   prints how many block
                                                    devices the guest sees

A profile is an INI file: [identity] with the SMBIOS records "bios",
"system", "chassis" (QEMU's -smbios fields) and "record.<type>" (a raw
structure: the formatted area in hex, "|", then its strings); [memory] with
"megabytes"; one [controller NAME] per storage controller with "kind",
"disks" (sizes as truncate takes them) and, on kind ide, "cdrom"."""

import argparse
import configparser
import os
import subprocess
import sys

SMBIOS_TYPES = {"bios": 0, "system": 1, "chassis": 3}
# The chipset's IDE channels hold four drives; the CD-ROM drive takes the
# secondary master, as on most servers.
IDE_DISK_INDEXES = [0, 1, 3]
IDE_CDROM_INDEX = 2


class ProfileError(Exception):
    pass


def raw_record(text):
    """The bytes of a raw SMBIOS structure "hex bytes | string | string"."""
    parts = [part.strip() for part in text.split("|")]
    formatted = bytes.fromhex(parts[0])
    strings = b"".join(part.encode("latin-1") + b"\0" for part in parts[1:])
    return formatted + (strings or b"\0") + b"\0"


def disk_file(folder, name, size):
    path = os.path.join(folder, f"{name}.raw")
    if os.path.exists(path):
        os.remove(path)
    subprocess.run(["truncate", "-s", size, path], check=True)
    return f"file={path},format=raw"


def controller_arguments(name, section, folder):
    kind = section.get("kind", "")
    sizes = section.get("disks", "").split()
    cdrom = section.getboolean("cdrom", fallback=False)
    if cdrom and kind != "ide":
        raise ProfileError(f"controller {name}: only ide holds the CD-ROM drive")
    drives = [(f"{name}d{index}", size) for index, size in enumerate(sizes)]
    arguments = []
    if kind == "ide":
        if len(sizes) > len(IDE_DISK_INDEXES):
            raise ProfileError(f"controller {name}: ide holds at most {len(IDE_DISK_INDEXES)} disks")
        for (drive, size), index in zip(drives, IDE_DISK_INDEXES):
            arguments += ["-drive", f"if=ide,index={index},{disk_file(folder, drive, size)}"]
        if cdrom:
            arguments += ["-drive", f"if=ide,index={IDE_CDROM_INDEX},media=cdrom"]
    elif kind in ("ahci", "lsi53c895a", "megasas"):
        arguments += ["-device", f"{kind},id={name}"]
        for index, (drive, size) in enumerate(drives):
            arguments += ["-drive", f"if=none,id={drive},{disk_file(folder, drive, size)}"]
            if kind == "ahci":
                arguments += ["-device", f"ide-hd,drive={drive},bus={name}.{index}"]
            else:
                arguments += ["-device", f"scsi-hd,drive={drive},bus={name}.0,scsi-id={index}"]
    elif kind in ("virtio-blk", "nvme"):
        # One PCI function per disk.
        for index, (drive, size) in enumerate(drives):
            arguments += ["-drive", f"if=none,id={drive},{disk_file(folder, drive, size)}"]
            if kind == "nvme":
                arguments += ["-device", f"nvme,serial=TIDEWELL{name.upper()}{index:02d},drive={drive}"]
            else:
                arguments += ["-device", f"virtio-blk-pci,drive={drive}"]
    else:
        raise ProfileError(f"controller {name}: unknown kind {kind!r}")
    return arguments


def qemu_arguments(profile, folder):
    arguments = ["-m", profile.get("memory", "megabytes", fallback="256")]
    identity = profile["identity"] if profile.has_section("identity") else {}
    for key, value in identity.items():
        if key in SMBIOS_TYPES:
            arguments += ["-smbios", f"type={SMBIOS_TYPES[key]},{value}"]
        elif key.startswith("record."):
            path = os.path.join(folder, f"smbios-{key.split('.', 1)[1]}.bin")
            with open(path, "wb") as record:
                record.write(raw_record(value))
            arguments += ["-smbios", f"file={path}"]
        else:
            raise ProfileError(f"identity: unknown record {key!r}")
    for section in profile.sections():
        if section.startswith("controller "):
            arguments += controller_arguments(section.split(" ", 1)[1], profile[section], folder)
    return arguments


def block_devices(profile):
    count = 0
    for section in profile.sections():
        if section.startswith("controller "):
            count += len(profile[section].get("disks", "").split())
            count += profile[section].getboolean("cdrom", fallback=False)
    return count


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("profile")
    what = parser.add_mutually_exclusive_group(required=True)
    what.add_argument("--disks")
    what.add_argument("--block-devices", action="store_true")
    options = parser.parse_args()
    profile = configparser.ConfigParser(interpolation=None)
    if not profile.read(options.profile):
        sys.exit(f"machine_profile.py: cannot read {options.profile}")
    try:
        if options.block_devices:
            print(block_devices(profile))
        else:
            os.makedirs(options.disks, exist_ok=True)
            print("\n".join(qemu_arguments(profile, options.disks)))
    except (ProfileError, ValueError, configparser.Error) as error:
        sys.exit(f"machine_profile.py: {options.profile}: {error}")


if __name__ == "__main__":
    main()
