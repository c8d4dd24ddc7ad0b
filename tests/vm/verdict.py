"""The virtual-server test's verdicts: one line per comparison, "CHECK <name>
PASS|FAIL expected=<...> actual=<...>", and the count of failures."""

failures = 0


def check(name, expected, actual):
    """Passes when `expected` equals `actual`; an expectation of "" or None
    never passes, so a missing oracle reading cannot hide a missing answer."""
    global failures
    passed = expected == actual and expected not in ("", None)
    failures += not passed
    print(f"CHECK {name} {'PASS' if passed else 'FAIL'} expected={expected} actual={actual}")
