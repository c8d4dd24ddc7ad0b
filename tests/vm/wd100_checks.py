"""Checks of the management processor page "wd100.nsp" in the main boot: the
guest ran its Query and each Set command (ANSWERS, in guest_init.sh's order),
each followed by the page's Query and a reading of the controller by ipmitool
on the host over the LAN. Both sides are brought to one flat form,
"<section>.<field>" -> value as the page's Query writes it, and compared:
what was asked with what ipmitool reads, the page's Query with ipmitool's
reading, and where the page must refuse (a bad value, the lock-out rule) or
ipmi_sim refuses (disabling LAN access, a power-restore policy), the page's
answer and an unchanged controller."""

import json
from urllib.parse import parse_qsl

from console import json_answer
from ipmitool_text import fields, users
from verdict import check

# The page's answer to each of the guest's steps (guest_init.sh, which also
# prints each step's request), in the guest's order. An answer of
# {"ErrorCode":0} means what was asked is what ipmitool must read; any other
# leaves the controller as it was.
ANSWERS = {
    "network": {"ErrorCode": 0},
    "dhcp": {"ErrorCode": 0},
    "bad-mask": {"ErrorCode": 2, "Parameter": "SubnetMask"},
    "user-add": {"ErrorCode": 0},
    "user-disable": {"ErrorCode": 0},
    "bad-name": {"ErrorCode": 2, "Parameter": "Name"},
    "sol": {"ErrorCode": 0},
    "sol-on": {"ErrorCode": 0},
    # ipmi_sim refuses to switch LAN access off (83h: access mode not
    # supported) and has no power-restore policies (C1h: invalid command).
    "lan-off": {"ErrorCode": 1, "Request": "LANEnabled", "CompletionCode": "83"},
    "power": {"ErrorCode": 1, "Request": "Policy", "CompletionCode": "C1"},
    "lockout": {"ErrorCode": 2, "Parameter": "Enabled"},
}
SECTION_OF_COMMAND = {"SetNetwork": "Network", "SetServices": "Services"}
IP_SOURCES = {"Static Address": "Static", "DHCP Address": "DHCP"}
PRIVILEGES = {"USER": "User", "OPERATOR": "Operator", "ADMINISTRATOR": "Administrator"}
BIT_RATES = {"IPMI-Over-Serial-Setting": 0, "9.6": 9600, "19.2": 19200, "38.4": 38400, "57.6": 57600,
             "115.2": 115200}
POLICIES = {"always-off": "AlwaysOff", "previous": "Previous", "always-on": "AlwaysOn"}


def yes_no(flag):
    return {"true": "Yes", "false": "No"}.get(flag)


def number(text):
    try:
        return int(text.split()[0])
    except (AttributeError, IndexError, ValueError):
        return None


def controller_view(reading):
    """What ipmitool read, in the page's terms; `reading(name)` gives one
    reading's text or None. Only the readings taken appear."""
    view = {}
    if reading("mc"):
        mc = fields(reading("mc"))
        view.update({
            "Identity.DeviceID": number(mc.get("Device ID")),
            "Identity.DeviceRevision": number(mc.get("Device Revision")),
            "Identity.FirmwareRevision": mc.get("Firmware Revision"),
            "Identity.IPMIVersion": mc.get("IPMI Version"),
            "Identity.ManufacturerID": number(mc.get("Manufacturer ID")),
            "Identity.ProductID": number(mc.get("Product ID")),
        })
    if reading("lan"):
        lan = fields(reading("lan"))
        vlan = lan.get("802.1q VLAN ID")
        view.update({
            "Network.IPSource": IP_SOURCES.get(lan.get("IP Address Source"), "Other"),
            "Network.IPAddress": lan.get("IP Address"),
            "Network.SubnetMask": lan.get("Subnet Mask"),
            "Network.Gateway": lan.get("Default Gateway IP"),
            "Network.MACAddress": lan.get("MAC Address"),
            "Network.VLANID": 0 if vlan == "Disabled" else number(vlan),
        })
    if reading("users"):
        for user_id, (name, _, privilege) in users(reading("users")).items():
            view[f"Users.{user_id}.Name"] = name
            view[f"Users.{user_id}.Privilege"] = PRIVILEGES.get(privilege, "NoAccess")
    access = next((reading(name) for name in ("access2", "access3", "access4") if reading(name)), None)
    if access:
        view["Users.EnabledCount"] = number(fields(access).get("Enabled User IDs"))
    if reading("sol"):
        sol = fields(reading("sol"))
        view["Services.SOLEnabled"] = yes_no(sol.get("Enabled"))
        view["Services.BaudRate"] = BIT_RATES.get(sol.get("Non-Volatile Bit Rate (kbps)"))
    if reading("channel"):
        mode = fields(reading("channel")).get("Access Mode")
        view["Services.LANEnabled"] = None if mode is None else ("No" if mode == "disabled" else "Yes")
    if reading("chassis"):
        view["PowerPolicy"] = POLICIES.get(fields(reading("chassis")).get("Power Restore Policy"), "Unknown")
    return view


def page_view(answer):
    """The page's Query answer in the same flat form."""
    view = {}
    for section in ("Identity", "Network", "Services"):
        for key, value in (answer.get(section) or {}).items():
            view[f"{section}.{key}"] = value
    for user in answer.get("Users") or []:
        view[f"Users.{user.get('ID')}.Name"] = user.get("Name")
        view[f"Users.{user.get('ID')}.Privilege"] = user.get("Privilege")
    if "Users" in answer:
        view["Users.EnabledCount"] = sum(user.get("Enabled") == "Yes" for user in answer["Users"])
    if "PowerPolicy" in answer:
        view["PowerPolicy"] = answer["PowerPolicy"]
    return view


def asked(parameters):
    """A Set command's parameters as the flat values that ipmitool must then
    read. A user's "Enabled" shows only in the count of enabled users (ipmi_sim
    leaves each user's own enable status unspecified); a password not at all."""
    command = parameters["Command"]
    if command == "SetUser":
        user = parameters["ID"]
        return {f"Users.{user}.{key}": value for key, value in parameters.items()
                if key in ("Name", "Privilege")}
    if command == "SetPowerPolicy":
        return {"PowerPolicy": parameters["Policy"]}
    numeric = {"VLANID", "BaudRate"}
    return {f"{SECTION_OF_COMMAND[command]}.{key}": int(value) if key in numeric else value
            for key, value in parameters.items() if key != "Command"}


def compare_query(name, query, controller):
    """The page's Query against ipmitool's reading, field by field (users
    with neither name nor privilege are left out on both sides)."""
    page = page_view(query)
    check(f"wd100.{name}.query.ErrorCode", 0, query.get("ErrorCode"))
    check(f"wd100.{name}.query.Unsupported", [], query.get("Unsupported"))
    # A section the page left out fails once, not once per field.
    missing = {key.split(".")[0] for key in controller if key.split(".")[0] not in query}
    for section in sorted(missing):
        check(f"wd100.{name}.query-vs-ipmitool.{section}", "answered", "left out")
    for key in sorted(key for key in controller if key.split(".")[0] not in missing):
        if key.startswith("Users.") and key.endswith((".Name", ".Privilege")):
            user = key.split(".")[1]
            if controller.get(f"Users.{user}.Name") == "" and controller.get(
                    f"Users.{user}.Privilege") == "NoAccess" and page.get(key) in ("", "NoAccess"):
                continue
        check(f"wd100.{name}.query-vs-ipmitool.{key}", compared(controller[key]), compared(page.get(key)))


def compared(value):
    """A value as a check compares it: JSON text, so that an empty name is
    a value of its own; None (nothing read) stays None and never passes."""
    return None if value is None else json.dumps(value)


def check_wd100(boot, readings):
    def reading_of(step):
        return lambda reading: readings.reading(f"wd100.{step}", reading)

    before = controller_view(reading_of("query"))
    compare_query("initial", json_answer(boot.section("wd100.query")), before)
    enabled = before.get("Users.EnabledCount")
    for name, answer in ANSWERS.items():
        parameters = dict(parse_qsl(boot.section(f"wd100.{name}.request") or "Command=None"))
        now = controller_view(reading_of(name))
        check(f"wd100.{name}.answer", json.dumps(answer, separators=(",", ":")),
              boot.section(f"wd100.{name}"))
        if parameters["Command"] not in ("SetNetwork", "SetUser", "SetServices", "SetPowerPolicy"):
            check(f"wd100.{name}.request", "a Set command", parameters["Command"])
            continue
        wanted = dict(before)
        if answer["ErrorCode"] == 0:
            wanted.update(asked(parameters))
            if parameters["Command"] == "SetUser" and "Enabled" in parameters:
                enabled += 1 if parameters["Enabled"] == "Yes" else -1
        if parameters["Command"] == "SetUser":
            wanted["Users.EnabledCount"] = enabled
        # Refused: what the command would have set is as it was before.
        for key in sorted(set(asked(parameters)) | ({"Users.EnabledCount"} if "ID" in parameters else set())):
            check(f"wd100.{name}.ipmitool.{key}", compared(wanted.get(key)), compared(now.get(key)))
        compare_query(name, json_answer(boot.section(f"wd100.{name}.query")), now)
        before.update(now)
