import re
import unittest

import documents

DOCUMENT = documents.read("docs/configuration.md")
KEY = r'"((?:paths|locale|bus|internet|modems|touch)/[A-Za-z]+)"'
WORDS = {"": {"none", "the system's", "none: nothing is run"}}


def shipped():
    """Keys and defaults of the configuration file as it is installed."""
    found, group = {}, ""
    for line in documents.read("packaging/terminalV4.conf").splitlines():
        if match := re.match(r"\[(\w+)\]", line):
            group = match[1]
        elif match := re.match(r";([A-Za-z]+)=(.*)", line):
            found[f"{group}/{match[1]}"] = match[2]
    return found


class Configuration(unittest.TestCase):
    def setUp(self):
        rows = documents.table_rows(documents.section(DOCUMENT, "The terminal's file"))
        self.told = {documents.codes(row[0])[0]: row[2] for row in rows}

    def test_table_has_the_keys_of_the_sources(self):
        text = "".join(
            path.read_text() for path in documents.sources("tavcommonlibs", "tavmodems", suffixes=(".cpp",)))
        self.assertEqual(sorted(self.told), sorted(set(re.findall(KEY, text))))

    def test_table_has_the_keys_and_defaults_of_the_installed_file(self):
        self.assertEqual(sorted(self.told), sorted(shipped()))
        for key, default in shipped().items():
            with self.subTest(key=key):
                told = self.told[key]
                self.assertTrue(told == f"`{default}`" or told in WORDS.get(default, ()), told)

    def test_every_variable_of_the_sources_is_told(self):
        text = "".join(
            path.read_text() for path in documents.sources("tavcommonlibs", "tavmodems", suffixes=(".cpp",)))
        names = set(re.findall(r'(?:qEnvironmentVariable\w*|q?getenv|q?putenv|k\w+\[\] =)\W+"([A-Z_]+)"', text))
        self.assertGreaterEqual(len(names), 6)
        rows = documents.table_rows(documents.section(DOCUMENT, "Environment"))
        told = {name for row in rows for name in documents.codes(row[0])}
        self.assertEqual(names - told, set())

    def test_numbers_and_values_are_those_of_the_sources(self):
        for words, path, pattern in (
                ("At {} MB it becomes", "core/logfile.cpp", r"kFileSize = (\d+)'000'000; // bytes"),
                ("; {} s at most", "servicestates/touchscreenconfigurator.h", r"limit = std::chrono::seconds\((\d+)\)"),
                ("| `LD_BIND_NOW` | `{}` |", "", r'"LD_BIND_NOW", "(\w+)"'),
                ("| `QT_XCB_GL_INTEGRATION` | `{}`,", "", r'kGlIntegration, "(\w+)"')):
            with self.subTest(words=words):
                source = f"tavcommonlibs/{path}" if path else "tavmodems/tavtestdealer/src/runtimeenvironment.cpp"
                value = re.search(pattern, documents.read(source))[1]
                self.assertTrue(words.format(value) in DOCUMENT, value)

    def test_files_are_what_the_packages_and_sources_name(self):
        text = "".join(
            path.read_text() for path in documents.sources("tavcommonlibs", "tavmodems", suffixes=(".cpp", ".h")))
        text += "".join(path.read_text() for path in (documents.TOP / "packaging").iterdir() if path.suffix != ".svg")
        for row in documents.table_rows(documents.section(DOCUMENT, "Other files")):
            name = documents.codes(row[0])[0].rsplit("/", 1)[1]
            with self.subTest(file=name):
                parts = [name] if "NAME" not in name else [name.replace("NAME", "")]
                if name.endswith((".log", ".ver")):
                    parts = name.rsplit(".", 1)
                for part in parts:
                    self.assertIn(part, text)


unittest.main()
