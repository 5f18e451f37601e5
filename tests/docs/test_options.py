"""Manual pages and documents speak of the options that the programs have, and of all of them."""

import re
import subprocess
import unittest

import documents
from documents import BUILD, TOP

PAGES = {
    "tavmodem": "tavmodems/tavmodem/tavmodem.1",
    "terminalsim": "packaging/terminalsim.1",
    "tavbusd": "packaging/tavbusd.8",
    "tavtestdialer": "packaging/tavtestdialer.1",
}
# Of every program, and not worth a line of a page.
COMMON = {"--help", "--help-all", "--version", "-h", "-v"}
OPTION = r"(?<![\w-])--?[a-z][a-z-]*"


def told(page):
    text = documents.read(page).replace("\\-", "-")
    # Other programs' options stand in examples alone.
    text = text.split(".SH EXAMPLES")[0]
    lines = re.findall(r"(?m)^\.(?:BI?R?|RB|TP|RI)\b.*", text)
    return {option for line in lines for option in re.findall(OPTION, line)}


def has(program):
    if program == "tavtestdialer":  # it opens a window whatever else it is given
        source = documents.read("tavmodems/tavtestdealer/src/testdealerroot.cpp")
        return set(re.findall(rf'"({OPTION})"', source))
    text = subprocess.run([BUILD / "bin" / program, "--help"], capture_output=True, text=True, check=True).stdout
    return set(re.findall(OPTION, re.sub(r"modem-only|USSD", "", text)))


class Options(unittest.TestCase):
    def test_pages_have_the_programs_options(self):
        for program, page in PAGES.items():
            with self.subTest(program=program):
                self.assertEqual(told(page) - COMMON, has(program) - COMMON)
                self.assertNotEqual(has(program), set())

    def test_documents_use_options_that_there_are(self):
        count = 0
        for document in documents.documents():
            for text in re.findall(r"`[^`]+`|(?m:^    .*$)", documents.read(document)):
                for program, rest in re.findall(r"\b(tavmodem|terminalsim|tavbusd)((?: [^|;&`'-][^ ]*| --[a-z]+)*)", text):
                    for option in re.findall(OPTION, rest.split(" -- ")[0]):
                        count += 1
                        with self.subTest(document=str(document), program=program, option=option):
                            self.assertIn(option, has(program))
        self.assertGreater(count, 2)

    def test_documents_use_commands_of_tavmodem_that_there_are(self):
        page = documents.read(PAGES["tavmodem"]).replace("\\-", "-").split(".SH COMMANDS")[1].split(".SH OPTIONS")[0]
        commands = set(re.findall(r"(?m)^\.TP\n\.BI? (\S+)", page))
        self.assertIn("list", commands)
        help_text = subprocess.run(
            [BUILD / "bin/tavmodem", "--help"], capture_output=True, text=True, check=True).stdout
        for command in commands:
            self.assertIn(f" {command} ", help_text)
        for document in documents.documents():
            text = documents.read(document)
            for word in re.findall(r"(?:`|^    |/)tavmodem(?: --\w+(?: ttyUSB\d+)?)* ([a-z-]+)", text, flags=re.M):
                with self.subTest(document=str(document), command=word):
                    self.assertIn(word, commands)

    def test_files_of_the_pages_are_those_of_the_configuration(self):
        told_there = documents.read("docs/configuration.md")
        for page in PAGES.values():
            text = documents.read(page).replace("\\-", "-")
            for section in re.findall(r"(?s)\.SH FILES\n(.*?)(?=\.SH|$)", text):
                for path in re.findall(r"(?m)^\.I (/\S+)", section):
                    with self.subTest(page=page, path=path):
                        self.assertIn(path.split("..")[0].rstrip("*"), told_there)


unittest.main()
