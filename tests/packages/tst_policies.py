#!/usr/bin/env python3
"""The templates for group policies and the presets of the Debian package: by the rules of their format, and for the keys
that the program has.

Usage: tests/packages/tst_policies.py SOURCE-FOLDER
"""

import configparser
import re
import sys
import unittest
from pathlib import Path
from xml.etree import ElementTree

SOURCE = Path(sys.argv.pop(1)) if len(sys.argv) > 1 else Path(__file__).resolve().parents[2]
POLICIES = SOURCE / "packaging/policies"
NS = "{http://schemas.microsoft.com/GroupPolicy/2006/07/PolicyDefinitions}"
LANGUAGES = ["pl-PL", "en-US"]
# Keys of the program that nobody presets, and why.
NOT_PRESET = {
    "GUID": "random, made for each user",
    "e-code:": "a secret of the user's",
    "language": "read without effect",
    "updateAvailable": "told by a sibling while it runs",
    "updateInProgress": "told by a sibling while it runs",
}
# Elements of a policy, and the element of a presentation that shows each.
SHOWN_BY = {"enum": "dropdownList", "text": "textBox", "decimal": "decimalTextBox", "boolean": "checkBox"}
NAME = re.compile(r"^\w+$")


def plain(tag):
    return tag.removeprefix(NS)


def program_keys():
    """Key to type, from the table that the header has, and the constants that the code uses."""
    text = (SOURCE / "QtCommon/base/settings.h").read_text(encoding="utf-8")
    constants = re.findall(r'constexpr char \w+\[\] = "([^"]+)";', text)
    table = dict(re.findall(r"^// (\S+)\s+(text|bool|bytes)\s", text, re.M))
    assert sorted(constants) == sorted(table), "the header's table and its constants differ"
    return table


class Admx(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.keys = program_keys()
        cls.root = ElementTree.parse(POLICIES / "velmor.admx").getroot()
        cls.policies = cls.root.findall(f"{NS}policies/{NS}policy")
        cls.texts = {}
        cls.presentations = {}
        for language in LANGUAGES:
            resources = ElementTree.parse(POLICIES / language / "velmor.adml").getroot()
            cls.texts[language] = {s.get("id"): s.text for s in resources.iter(f"{NS}string")}
            cls.presentations[language] = {p.get("id"): p for p in resources.iter(f"{NS}presentation")}

    def test_sections_stand_in_the_order_of_the_format(self):
        self.assertEqual([plain(child.tag) for child in self.root],
                         ["policyNamespaces", "resources", "supportedOn", "categories", "policies"])
        for policy in self.policies:
            order = ["parentCategory", "supportedOn", "enabledValue", "disabledValue", "elements"]
            found = [order.index(plain(child.tag)) for child in policy]
            self.assertEqual(found, sorted(found), policy.get("name"))
        for language in LANGUAGES:
            root = ElementTree.parse(POLICIES / language / "velmor.adml").getroot()
            self.assertEqual([plain(child.tag) for child in root], ["displayName", "description", "resources"])
            self.assertEqual([plain(child.tag) for child in root[2]], ["stringTable", "presentationTable"])

    def test_revisions_agree(self):
        needed = self.root.find(f"{NS}resources").get("minRequiredRevision")
        for language in LANGUAGES:
            root = ElementTree.parse(POLICIES / language / "velmor.adml").getroot()
            self.assertEqual(root.get("revision"), needed)
            self.assertEqual(root.get("schemaVersion"), self.root.get("schemaVersion"))

    def test_names_are_names_and_unique(self):
        for kind in ["policy", "category", "definition"]:
            names = [e.get("name") for e in self.root.iter(NS + kind)]
            self.assertEqual(len(names), len(set(names)))
            for name in names:
                self.assertRegex(name, NAME)

    def test_every_policy_is_complete(self):
        categories = {e.get("name") for e in self.root.iter(f"{NS}category")}
        systems = {e.get("name") for e in self.root.iter(f"{NS}definition")}
        for policy in self.policies:
            for attribute in ["name", "class", "displayName", "explainText", "key"]:
                self.assertTrue(policy.get(attribute), attribute)
            self.assertEqual(policy.get("class"), "Machine")
            self.assertIn(policy.find(f"{NS}parentCategory").get("ref"), categories)
            self.assertIn(policy.find(f"{NS}supportedOn").get("ref"), systems)

    def test_every_text_is_there_in_both_languages_and_none_besides(self):
        wanted = set(re.findall(r"\$\(string\.(\w+)\)", (POLICIES / "velmor.admx").read_text(encoding="utf-8")))
        for language in LANGUAGES:
            self.assertEqual(set(self.texts[language]), wanted, language)
            for name, text in self.texts[language].items():
                self.assertTrue(text and text.strip() == text, name)
        self.assertNotEqual(self.texts["pl-PL"]["theme_explain"], self.texts["en-US"]["theme_explain"])

    def test_every_element_is_shown_by_its_presentation(self):
        wanted = {}
        for policy in self.policies:
            elements = policy.find(f"{NS}elements")
            if elements is None:
                self.assertIsNone(policy.get("presentation"))
                continue
            name = re.fullmatch(r"\$\(presentation\.(\w+)\)", policy.get("presentation")).group(1)
            wanted[name] = [(SHOWN_BY[plain(e.tag)], e.get("id")) for e in elements]
        for language in LANGUAGES:
            shown = {name: [(plain(e.tag), e.get("refId")) for e in presentation]
                     for name, presentation in self.presentations[language].items()}
            self.assertEqual(shown, wanted, language)

    def test_presets_are_the_programs_keys_in_its_own_store(self):
        presets = {}
        for policy in self.policies:
            # The program is one of 64 bits and reads no other view of this branch.
            self.assertEqual(policy.get("key"), "Software\\velmor\\config")
            if policy.get("valueName"):
                presets[policy.get("valueName")] = "bool"
                values = [policy.find(f"{NS}{kind}/{NS}decimal").get("value") for kind in ["enabledValue", "disabledValue"]]
                self.assertEqual(values, ["1", "0"])
            for element in policy.findall(f"{NS}elements/*"):
                presets[element.get("valueName")] = "text"
        self.assertEqual(presets, {key: kind for key, kind in self.keys.items() if key not in NOT_PRESET})
        self.assertEqual(set(NOT_PRESET) - set(self.keys), set(), "keys that the program no longer has")

    def test_themes_are_those_that_the_program_has(self):
        there = sorted(p.stem for p in (SOURCE / "Shared/themes").glob("*.cmake") if p.stem != "themes")
        offered = [e.text for e in self.root.iter(f"{NS}string")]
        self.assertEqual(sorted(offered), there)
        # What an administrator reads, and the line of it that names them.
        for name, line in (("docs/deploying.md", r"^\| `theme` \|(.*)$"),
                           ("packaging/linux/velmor/config.conf", r"^;(.*)\n;theme=")):
            told = re.search(line, (SOURCE / name).read_text(encoding="utf-8"), re.M)[1]
            self.assertEqual([theme for theme in there if not re.search(rf"\b{theme}\b", told)], [], name)


class Conffile(unittest.TestCase):
    def test_presets_are_the_same_and_none_is_set(self):
        text = (SOURCE / "packaging/linux/velmor/config.conf").read_text(encoding="utf-8")
        set_by_default = configparser.ConfigParser()
        set_by_default.read_string(text)
        self.assertEqual(dict(set_by_default["General"]), {})
        offered = re.findall(r"^;(\w+)=(\S+)$", text, re.M)
        self.assertEqual({name for name, _ in offered}, set(program_keys()) - set(NOT_PRESET))


if __name__ == "__main__":
    unittest.main(verbosity=2)
