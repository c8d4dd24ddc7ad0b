#!/usr/bin/env python3
"""The host's side of the main boot: reads the simulated management
controller with ipmitool over its LAN channel whenever the guest asks.

The guest writes one request line on its second serial port,
"<name> <reading> <reading>...", and waits for the reply "done <name>". For
each reading this program runs the ipmitool command of READINGS against the
controller and appends its output to OUTPUT between "@@BEGIN <name>.<reading>"
and "@@END <name>.<reading> <exit status>", the form of the guest's console,
so that check.py reads both the same way.

Usage: controller_reader.py --fifo PATH --port PORT --user NAME --password TEXT --output FILE
PATH.out carries the guest's requests, PATH.in the replies (QEMU's pipe
character device). Runs until the guest's side closes or it is killed; every
ipmitool call has its own time limit, so a silent controller delays the guest
by at most that much per reading."""

import argparse
import os
import subprocess

READINGS = {
    "mc": ["mc", "info"],
    "lan": ["lan", "print", "1"],
    "users": ["user", "list", "1"],
    "sol": ["sol", "info", "1"],
    "chassis": ["chassis", "status"],
    "bootflags": ["chassis", "bootparam", "get", "5"],
    "channel": ["channel", "info", "1"],
}
# "access<ID>" reads `channel getaccess 1 <ID>`.
ACCESS_PREFIX = "access"
CALL_LIMIT = 15


def command(reading):
    if reading.startswith(ACCESS_PREFIX) and reading[len(ACCESS_PREFIX):].isdigit():
        return ["channel", "getaccess", "1", reading[len(ACCESS_PREFIX):]]
    return READINGS.get(reading)


def read(base, reading):
    """ipmitool's output of one reading, and its exit status."""
    arguments = command(reading)
    if arguments is None:
        return f"controller_reader: unknown reading {reading}", 2
    try:
        result = subprocess.run(base + arguments, stdout=subprocess.PIPE,
                                stderr=subprocess.STDOUT, text=True, timeout=CALL_LIMIT)
        return result.stdout, result.returncode
    except subprocess.TimeoutExpired:
        return f"controller_reader: no answer within {CALL_LIMIT} s", 124


def main():
    parser = argparse.ArgumentParser()
    for option in ("--fifo", "--port", "--user", "--password", "--output"):
        parser.add_argument(option, required=True)
    arguments = parser.parse_args()
    # Cipher suite 3 is named: without it ipmitool first asks for the channel's
    # cipher suites, which the simulator does not answer, and waits seconds
    # for each call. Reading needs no more than the operator's privilege.
    base = ["ipmitool", "-I", "lanplus", "-C", "3", "-L", "OPERATOR", "-H", "127.0.0.1",
            "-p", arguments.port, "-U", arguments.user, "-P", arguments.password]
    # Both ends opened for reading and writing: neither open waits for QEMU.
    requests = os.fdopen(os.open(arguments.fifo + ".out", os.O_RDWR), "rb", buffering=0)
    replies = os.open(arguments.fifo + ".in", os.O_RDWR)
    with open(arguments.output, "a") as output:
        pending = b""
        while True:
            data = requests.read(256)
            if not data:
                return 0
            pending += data
            while b"\n" in pending:
                line, pending = pending.split(b"\n", 1)
                words = line.decode("ascii", "replace").strip().split()
                if not words:
                    continue
                name = words[0]
                for reading in words[1:]:
                    text, status = read(base, reading)
                    output.write(f"@@BEGIN {name}.{reading}\n{text.rstrip()}\n"
                                 f"@@END {name}.{reading} {status}\n")
                output.flush()
                os.write(replies, f"done {name}\n".encode())


if __name__ == "__main__":
    raise SystemExit(main())
