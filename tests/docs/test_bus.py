"""The numbers and names that docs/bus.md gives are those of the code."""

import re
import unittest

import documents

DOCUMENT = documents.read("docs/bus.md")
BUS = "tavcommonlibs/tavbus"


def constant(path, name):
    value = re.search(rf"\b{name} = ([0-9* ]+)(?:s|ms)?;", documents.read(f"{BUS}/{path}"))[1]
    number = 1
    for factor in value.split("*"):
        number *= int(factor)
    return number


class Bus(unittest.TestCase):
    def test_limits(self):
        told = dict(documents.table_rows(documents.section(DOCUMENT, "Types and sizes")))
        self.assertEqual(told, {
            "A name": f"{constant('wire.h', 'kMaxName')} characters",
            "A description": f"{constant('wire.h', 'kMaxDescription')} characters",
            "A record of settings": f"{constant('wire.h', 'kMaxRecord') // 1024} KiB",
            "A state, the data of a command": f"{constant('wire.h', 'kMaxState') // 1024} KiB",
            "Lists and maps in one another": f"{constant('wire.h', 'kMaxDepth')}",
            "Owners of settings; agents with a state": f"{constant('daemon/store.h', 'kMaxOwners')} each",
            "Agents of a connection": f"{constant('daemon/agentregistry.h', 'kMaxAgentsOfConnection')}",
            "Connections of an agent": f"{constant('daemon/agentregistry.h', 'kMaxConnectionsOfAgent')}",
            "Commands that a connection sends, each counted once for every listener":
                f"{constant('daemon/broker.cpp', 'kDeliveriesAtOnce')} at once,"
                f" {constant('daemon/broker.cpp', 'kDeliveriesPerSecond')} a second",
        })

    def test_numbers_in_the_reference(self):
        for path, name, words in (
                ("daemon/agentregistry.h", "kMaxAgentsOfConnection", "more than {} agents of one connection"),
                ("daemon/agentregistry.h", "kMaxConnectionsOfAgent", "or {} connections of one agent"),
                ("daemon/store.h", "kMaxOwners", "({} owners have records already)"),
                ("daemon/store.h", "kMaxOwners", "({} agents have states already)"),
                ("daemon/broker.cpp", "kDeliveriesAtOnce", "more than {} at once"),
                ("daemon/broker.cpp", "kDeliveriesPerSecond", "or {} a second"),
                ("daemon/broker.cpp", "kMaxHeld", "up to {} commands wait")):
            self.assertTrue(words.format(constant(path, name)) in DOCUMENT)
        self.assertEqual(constant("daemon/broker.cpp", "kSettlingTime"), 1)
        self.assertTrue("in the first second of the broker's own life" in DOCUMENT)

    def test_names_and_errors(self):
        told = documents.codes(DOCUMENT)
        names = re.findall(r'"([\w./]+)"', documents.read(f"{BUS}/busnames.h") + documents.read(f"{BUS}/buserrors.h"))
        self.assertGreater(len(names), 10)
        for name in names:
            if "." in name and not name.endswith(".h") or "/" in name or name.islower():
                self.assertIn(name, told)

    def test_states_are_those_of_the_readers(self):
        for name, path in (
                ("serviceMode", "tavmodems/modems/modemservicestate.cpp"),
                ("state", "tavcommonlibs/servicestates/watchdogstate.cpp"),
                ("serviceState", "tavcommonlibs/servicestates/printservicestatetavbuswrapper.cpp"),
                ("acceptors", "tavcommonlibs/servicestates/acceptorstate.cpp"),
                ("thread_id", "tavcommonlibs/servicestates/acceptorstate.cpp"),
                ("disabled", "tavcommonlibs/servicestates/acceptorstate.cpp")):
            self.assertTrue(f'QStringLiteral("{name}")' in documents.read(path), name)
            self.assertTrue(f'"{name}":' in DOCUMENT)
        modes = re.search(r"enum Mode \{(.*?)\};", documents.read("tavmodems/modems/modemservicestate.h"), re.S)[1]
        told = ", ".join(f"{number} {name.lower()}" for name, number in re.findall(r"(\w+) = (\d)", modes))
        self.assertTrue(told in DOCUMENT)

    def test_waits_are_those_of_the_code(self):
        limit = re.search(r"m_limit\{(\d+)000\}", documents.read(f"{BUS}/brokerlink.h"))[1]
        self.assertTrue(f"takes {limit} s at most" in DOCUMENT)
        controller = documents.read("tavcommonlibs/servicescontroller/servicescontroller.h")
        self.assertEqual(re.search(r"kLongestWait = (\d+);", controller)[1], "60000")
        self.assertTrue("every second, for a minute at most" in DOCUMENT)
        source = documents.read("tavcommonlibs/servicescontroller/servicescontroller.cpp")
        oldest = re.search(r"kLongestAge = (\d+); // s", source)[1]
        self.assertTrue(f"A state that is older than {oldest} s" in DOCUMENT)

    def test_states_of_the_printers(self):
        states = documents.read("tavcommonlibs/servicestates/printservicestate.h")
        told = ", ".join(
            f"{number} {name.lower()}" for name, number in re.findall(r"int (STOPPED|DISABLED) = (\d);", states))
        self.assertTrue(f'`{{"serviceState": int}}`: {told} |' in DOCUMENT, told)

    def test_fields_of_a_modems_record(self):
        text = documents.read("tavmodems/modems/modeminfo.cpp") + documents.read("tavmodems/modems/modemsettings.cpp")
        keys = re.findall(r'const QString [A-Z_]+ = QStringLiteral\("(\w+)"\)', text)
        self.assertGreater(len(keys), 13)
        for key in keys:
            self.assertTrue(f"`{key}`" in DOCUMENT)


unittest.main()
