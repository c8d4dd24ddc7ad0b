"""ipmitool's printed readings (lan print, user list, sol info, chassis
status, channel getaccess, chassis bootparam get) as values."""

import re

USER_ROW = re.compile(r"^(\d+)\s+(.*?)\s+(true|false)\s+(true|false)\s+(true|false)\s+(.+?)\s*$")


def fields(text):
    """"Key : value" lines as a dict; the first of a repeated key wins, and
    continuation lines (an empty key) are left out."""
    found = {}
    for line in (text or "").splitlines():
        key, colon, value = line.partition(":")
        if colon and key.strip() and key.strip() not in found:
            found[key.strip()] = value.strip()
    return found


def users(text):
    """The rows of `user list`: ID -> (name, IPMI messaging, channel privilege
    limit as printed)."""
    rows = {}
    for line in (text or "").splitlines():
        row = USER_ROW.match(line)
        if row:
            rows[int(row.group(1))] = (row.group(2), row.group(5), row.group(6))
    return rows


def boot_parameter_data(text):
    """The data bytes of `chassis bootparam get`, as hex text, or None."""
    value = fields(text).get("Boot parameter data")
    return value.lower() if value else None
