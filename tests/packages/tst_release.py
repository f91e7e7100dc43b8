#!/usr/bin/env python3
"""packaging/release up to the tests and builds that it starts: what it goes on with, and each doubt at which it stops."""

import os
import re
import subprocess
import tempfile
import unittest
from pathlib import Path

from shipped import FULL_VERSION, SOURCE, VERSION, run

HISTORY = "statics/historia_zmian.html"
REACHED = "the tests are reached"


class Release(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.folder = Path(folder.name)
        run("openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "30", "-subj", "/CN=Test signer", "-addext",
            "extendedKeyUsage=codeSigning", "-keyout", "key.pem", "-out", "signer.pem", cwd=cls.folder)
        (cls.folder / "password").write_text("hasło", encoding="utf-8")
        run("openssl", "pkcs12", "-export", "-inkey", "key.pem", "-in", "signer.pem", "-passout", "file:password", "-out",
            "key.p12", cwd=cls.folder)

    def setUp(self):
        """A clone of its own without tags, in which the tests are nothing but a word."""
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.clone = Path(scratch.name) / "clone"
        run("git", "clone", "--quiet", "--no-tags", SOURCE, self.clone)
        self.write("dev", f"#!/bin/sh\necho '{REACHED}'\nexit 5\n")
        self.write("packaging/release", (SOURCE / "packaging/release").read_text(encoding="utf-8"))
        self.write("packaging/sign", (SOURCE / "packaging/sign").read_text(encoding="utf-8"))
        self.commit()

    def write(self, name, text):
        (self.clone / name).write_text(text, encoding="utf-8")

    def git(self, *words):
        run("git", "-c", "user.name=Test", "-c", "user.email=test@example.invalid", *words, cwd=self.clone)

    def commit(self):
        self.git("commit", "--quiet", "--allow-empty", "--all", "--message", "A change")

    def release(self, version=VERSION, **variables):
        environment = {name: value for name, value in os.environ.items() if not name.startswith("VELMOR_")}
        key = {"VELMOR_SIGN_KEY": str(self.folder / "key.p12"), "VELMOR_SIGN_PASSWORD": str(self.folder / "password")}
        done = subprocess.run(["packaging/release", version], cwd=self.clone, capture_output=True, text=True,
                              env={**environment, **key, **variables})
        return done.returncode, done.stdout + done.stderr

    def assertStops(self, word, *arguments, **variables):
        code, told = self.release(*arguments, **variables)
        self.assertEqual(code, 1, told)
        self.assertRegex(told.splitlines()[-1], "^release: .*" + word)
        self.assertNotIn(REACHED, told)

    def test_first_release_goes_on_to_the_tests_and_stops_with_them(self):
        code, told = self.release()
        self.assertIn(REACHED, told)
        self.assertEqual(code, 5, told)
        self.assertRegex(told.splitlines()[-1], r"^release: stopped in line \d+: \./dev check format lint")

    def test_later_release_goes_on_after_an_older_tag_and_again_on_its_own(self):
        self.git("tag", "v4.3.4.99", "HEAD~1")
        self.git("tag", f"v{FULL_VERSION}")
        self.assertIn(REACHED, self.release()[1])

    def test_without_a_key_only_where_that_is_asked_for(self):
        self.assertStops("names no key", VELMOR_SIGN_KEY="")
        self.assertIn(REACHED, self.release(VELMOR_SIGN_KEY="", VELMOR_UNSIGNED="1")[1])

    def test_key_that_cannot_sign(self):
        self.assertStops("the key cannot sign", VELMOR_SIGN_KEY=str(self.folder / "no.p12"))
        self.assertStops("the key cannot sign", VELMOR_SIGN_PASSWORD=str(self.folder / "signer.pem"))

    def test_another_version(self):
        self.assertStops("not of 9.9.9", "9.9.9")

    def test_change_that_is_in_no_commit(self):
        self.write("foreign", "")
        self.assertStops("in no commit")

    def test_tag_of_another_commit(self):
        self.git("tag", f"v{FULL_VERSION}", "HEAD~1")
        self.assertStops("another commit already")

    def test_newer_tag(self):
        self.git("tag", "v99.0.0.1", "HEAD~1")
        self.assertStops("is newer than")

    def test_history_without_this_version(self):
        text = (self.clone / HISTORY).read_text(encoding="utf-8")
        self.write(HISTORY, text.replace(f"<h2>Wersja {VERSION}</h2>", "<h2>Wersja 4.0.0</h2>"))
        self.commit()
        self.assertStops("newest entry")

    def test_history_that_says_nothing(self):
        text = (self.clone / HISTORY).read_text(encoding="utf-8")
        start = text.index("<h2>")
        end = text.find("<h2>", start + 1)
        end = len(text) if end < 0 else end
        self.write(HISTORY, text[:start] + re.sub("</?li>", "", text[start:end]) + text[end:])
        self.commit()
        self.assertStops("is empty")

    def test_documents_of_another_version(self):
        text = (self.clone / "README.md").read_text(encoding="utf-8")
        self.write("README.md", text + "\nvelmor-4.0.0-x64.msi\n")
        self.commit()
        self.assertStops("documents name packages")


if __name__ == "__main__":
    unittest.main()
