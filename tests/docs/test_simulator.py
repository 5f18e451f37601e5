"""docs/simulator.md names every field that the readers of scenarios and profiles take, and no other."""

import re
import unittest

import documents

DOCUMENT = documents.read("docs/simulator.md")
# Whose fields stand below which heading, by the function that reads them.
READERS = {
    "simulator/scenario.cpp": {
        "Scenario::parse": ["The terminal", "A page"],
        "readModem": ["A modem"],
        "readSim": ["A SIM card"],
        "readSms": ["A message"],
        "readNetwork": ["A network"],
        "readLogin": ["A login"],
        "readConnection": ["A connection"],
        "readServices": ["A service"],
    },
    "simulator/modemprofile.cpp": {
        "ModemProfile::parse": ["A profile", "A periodic line"],
        "readUsb": ["A USB identity"],
        "readComposition": ["A composition"],
        "readUssd": ["USSD"],
        "ModemAnswer::read": ["An answer"],
    },
}
FIELD = re.compile(
    r'(?:\.(?:text|flag|word|number|numbers|texts|textMap|numberMap|object|objects|has)\(\s*'
    r'|hexNumber\(|(?:textsOr|ussdCoding)\(\s*reader, )QStringLiteral\("(\w+)"\)')


def fields_read(path):
    """Field names by the function that they stand in."""
    found = {}
    for function in re.split(r"\n}\n", documents.read(path)):
        heads = re.findall(r"(?m)^(?:[\w<>:, *]+ )?(\w+(?:::\w+)?)\([^;{]*\)[^;{]*\n{", function)
        names = set(FIELD.findall(function))
        # The pages' names are in a loop over the texts themselves.
        names |= set(re.findall(r'QStringLiteral\("(maker|public)"\)', function))
        if heads and names:
            found[heads[-1]] = names
    return found


def told(heading):
    names = set()
    for row in documents.table_rows(documents.section(DOCUMENT, heading).split("| Fault |")[0]):
        names |= set(documents.codes(row[0]))
    return names


class Simulator(unittest.TestCase):
    maxDiff = None

    def test_every_field_is_told_and_no_other(self):
        for path, functions in READERS.items():
            read = fields_read(path)
            self.assertEqual(sorted(read), sorted(functions), "functions that read fields")
            for function, headings in functions.items():
                with self.subTest(function=function):
                    names = set().union(*(told(heading) for heading in headings))
                    self.assertEqual(sorted(names), sorted(read[function]))

    def test_every_fault_is_told_and_no_other(self):
        for source, heading in (("simulatedmodem", "A modem"), ("simulatedservice", "A service")):
            text = documents.read(f"simulator/{source}.cpp")
            body = re.search(r"::faultNames\(\)\n{(.*?)\n}", text, flags=re.S)[1]
            faults = documents.section(DOCUMENT, heading).split("| Fault |")[1]
            names = {name for row in documents.table_rows("| Fault |" + faults) for name in documents.codes(row[0])}
            self.assertEqual(sorted(names), sorted(re.findall(r'"(\w+)"', body)))

    def test_every_scenario_and_profile_is_told(self):
        for folder, heading in (("scenarios", "Scenarios that come along"), ("profiles", "Profiles")):
            names = set(documents.codes(documents.section(DOCUMENT, heading)))
            for path in (documents.TOP / "simulator" / folder).glob("*.json"):
                self.assertIn(path.stem, names)

    def test_every_method_of_the_control_interface_is_told_and_no_other(self):
        methods = re.findall(r'<method name="(\w+)"', documents.read("simulator/org.ovrel.TerminalSim1.xml"))
        rows = documents.table_rows(documents.section(DOCUMENT, "Control"))
        self.assertEqual(sorted(name for row in rows for name in documents.codes(row[0])), sorted(methods))


unittest.main()
