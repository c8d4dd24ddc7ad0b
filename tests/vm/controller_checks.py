"""Checks of what ipmitool on the host reads over the simulated controller's
LAN channel (controller_reader.py), before the guest changes anything."""

from ipmitool_text import fields, users
from verdict import check

# The LAN settings that run.sh seeds; it configures the administrator "admin"
# (ID 2) and the host's own operator (ID 6).
SEEDED_LAN = {
    "IP Address Source": "Static Address",
    "IP Address": "192.168.40.12",
    "Subnet Mask": "255.255.255.0",
    "Default Gateway IP": "192.168.40.1",
    "MAC Address": "02:1a:7e:00:00:01",
    "802.1q VLAN ID": "Disabled",
}


def check_controller_start(readings):
    lan = fields(readings.reading("start", "lan"))
    for key, value in SEEDED_LAN.items():
        check(f"controller.start.lan.{key}", value, lan.get(key))
    check("controller.start.users.2", ("admin", "true", "ADMINISTRATOR"),
          users(readings.reading("start", "users")).get(2))
    check("controller.start.users.6", ("lanreader", "true", "OPERATOR"),
          users(readings.reading("start", "users")).get(6))
    check("controller.start.access2.Privilege Level", "ADMINISTRATOR",
          fields(readings.reading("start", "access2")).get("Privilege Level"))
    sol = fields(readings.reading("start", "sol"))
    check("controller.start.sol.Enabled", "true", sol.get("Enabled"))
    check("controller.start.sol.Payload Channel", "1 (0x01)", sol.get("Payload Channel"))
    check("controller.start.chassis.Power Restore Policy", "always-off",
          fields(readings.reading("start", "chassis")).get("Power Restore Policy"))
    check("controller.start.channel.Channel Medium Type", "802.3 LAN",
          fields(readings.reading("start", "channel")).get("Channel Medium Type"))
