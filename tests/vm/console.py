"""Sections of a log in the guest console's form: each answer between
"@@BEGIN <name>" and "@@END <name> <exit status>"."""

import json
import os


def sections(lines):
    found, current, body = {}, None, []
    for line in lines:
        if line.startswith("@@BEGIN "):
            current = line.split(" ", 1)[1]
            body = []
        elif line.startswith("@@END ") and current is not None:
            found[current] = "\n".join(body).strip("\n")
            current = None
        elif current is not None:
            body.append(line)
    return found


def read_lines(path):
    with open(path, errors="replace") as log:
        return [line.rstrip("\r\n").replace("\r", "") for line in log]


class Boot:
    """One boot's console: the sections, the marker lines, and QEMU's exit
    status."""

    def __init__(self, work, name):
        self.name = name
        self.lines = read_lines(os.path.join(work, f"{name}.log"))
        with open(os.path.join(work, f"{name}.status")) as status:
            self.status = int(status.read())
        self.sections = sections(self.lines)

    def section(self, name):
        return self.sections.get(name)

    def has(self, text):
        return any(text in line for line in self.lines)


class ControllerReadings:
    """What ipmitool on the host read over the controller's LAN channel
    during the main boot (controller_reader.py): "<name>.<reading>" sections;
    none when the file is missing."""

    def __init__(self, work):
        try:
            self.sections = sections(read_lines(os.path.join(work, "main.controller.log")))
        except OSError:
            self.sections = {}

    def reading(self, name, reading):
        return self.sections.get(f"{name}.{reading}")


def json_answer(text):
    try:
        return json.loads(text)
    except (TypeError, ValueError):
        return {}
