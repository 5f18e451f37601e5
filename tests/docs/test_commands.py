"""The commands that the documents show are run, here or by what commands.txt names."""

import os
import pathlib
import re
import subprocess
import unittest

import documents
from documents import BUILD, TOP

SHELL = ("", "sh", "bash")


def shown():
    """The commands in blocks, by the document that they stand in."""
    for document in documents.documents():
        for language, block in documents.blocks(documents.read(document)):
            if language in SHELL:
                for line in block.splitlines():
                    if command := re.sub(r"\s+#.*", "", line).strip():
                        yield document, command


def runners():
    """What runs a command, by the command."""
    found = {}
    for line in pathlib.Path(__file__).with_name("commands.txt").read_text().splitlines():
        if line and not line.startswith("#"):
            how, command = line.split("|", 1)
            found[command.strip()] = how.strip().split(maxsplit=1)
    return found


def tests():
    listed = subprocess.run(
        ["ctest", "-N", "--test-dir", BUILD], capture_output=True, text=True, check=True).stdout
    return set(re.findall(r"Test +#\d+: (\S+)", listed))


def is_test(name, known=()):
    """Whether there is such a test in this build, or would be in one of another kind."""
    return name in known or any(
        re.search(rf"(?:NAME |tav_add_test\(){name}\s", path.read_text()) for path in (TOP / "tests").rglob("CMakeLists.txt"))


def run(command):
    environment = dict(os.environ, PATH=f"{BUILD}/bin:{os.environ['PATH']}")
    return subprocess.run(
        command, shell=True, cwd=TOP, env=environment,
        stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=200, check=False)


class Commands(unittest.TestCase):
    def test_every_command_has_one_that_runs_it(self):
        self.assertEqual({command for _, command in shown()}, set(runners()))

    def test_those_that_run_commands_are_there(self):
        known = tests()
        for command, (how, *name) in runners().items():
            with self.subTest(command=command):
                self.assertIn(how, ("run", "terminal", "test", "script", "nobody"))
                if how == "test":
                    self.assertTrue(is_test(name[0], known), name[0])
                elif how == "script":
                    word = command.split()[0]
                    text = documents.read(name[0]) + documents.read("scripts/setup.sh")
                    self.assertTrue(word in text, word)

    def test_commands_run(self):
        for command, (how, *_) in runners().items():
            if how not in ("run", "terminal"):
                continue
            with self.subTest(command=command):
                # A service takes a moment until it has said something of itself.
                wait = "sleep 1; " if "loadState" in command else ""
                here = command.replace("build/dev/", f"{BUILD}/")
                line = here if how == "run" else f"{BUILD}/bin/terminalsim -- sh -c '{wait}{command}'"
                done = run(line)
                self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
                self.assertNotEqual(done.stdout + done.stderr, "")

    def test_scripts_named_in_texts_are_there_with_their_options(self):
        count = 0
        for document in documents.documents():
            for script, rest in re.findall(r"`?(?<![\w/])(scripts/[a-z-]+)((?: --[a-z]+)*)", documents.read(document)):
                count += 1
                with self.subTest(document=str(document), script=script + rest):
                    if script == "scripts/setup":
                        continue
                    text = documents.read(script)
                    for option in rest.split():
                        self.assertTrue(option in text, option)
        self.assertGreater(count, 10)

    def test_tests_named_in_texts_are_there(self):
        known, count = tests(), 0
        for document in documents.documents():
            text = documents.prose(documents.read(document))
            for name in re.findall(r"`((?:tst|docs|system)_\w+|[a-z]+(?<!_)test)`", text):
                count += 1
                with self.subTest(document=str(document), test=name):
                    self.assertTrue(is_test(name, known), name)
        self.assertGreater(count, 5)


unittest.main()
