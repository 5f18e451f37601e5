"""What docs/security.md says is let in is what the rule, the policy and the unit say."""

import re
import unittest

import documents

DOCUMENT = documents.read("docs/security.md")


class Security(unittest.TestCase):
    def test_commands_are_those_of_the_sudo_rule(self):
        rule = documents.read("packaging/tavtestdialer.sudoers")
        commands = re.search(r"(?s)OVREL_NETWORK = (.*?)\n%", rule)[1].replace("\\\n", "").split(", ")
        allowed = {re.sub(r"\^\S+(?= down)|\$$", lambda part: "NAME" if part[0] != "$" else "",
                          command.strip().removeprefix("/usr/sbin/").removeprefix("/usr/bin/")) for command in commands}
        rows = documents.table_rows(documents.section(DOCUMENT, "What is done as root for a technician"))
        self.assertEqual({documents.codes(row[0])[0] for row in rows}, allowed)

    def test_directories_are_closed_as_told(self):
        modes = dict(re.findall(r"(?m)^d (\S+) +(\d+) root ovrel", documents.read("packaging/tavtestdialer.tmpfiles.conf")))
        # "closed to all but root and the group"
        for folder in ("/run/ovrel", "/var/lib/ovrel/modems", "/var/log/ovrel"):
            self.assertEqual(modes[folder][-1], "0", folder)
            self.assertEqual(modes[folder][-2], "7", folder)

    def test_broker_is_confined_as_told(self):
        unit = documents.read("packaging/tavbusd.service.in").splitlines()
        for line in ("CapabilityBoundingSet=", "PrivateNetwork=yes", "ProtectSystem=strict", "UMask=0077"):
            self.assertIn(line, unit)


unittest.main()
