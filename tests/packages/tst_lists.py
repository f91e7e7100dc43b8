#!/usr/bin/env python3
"""The SPDX lists against the packages' files, both ways, and the checksums of the packages themselves."""

import hashlib
import json
import re
import unittest

from shipped import FULL_VERSION, LISTS, PACKAGES, files_of, run, unpack_for

# Identifiers of SPDX's own lists of licences and of exceptions.
KNOWN_LICENCES = {"LGPL-3.0-only", "GPL-3.0-only", "Qt-GPL-exception-1.0", "Apache-2.0", "GPL-3.0-or-later",
                  "GCC-exception-3.1", "ZPL-2.1", "MIT", "BSD-3-Clause", "OFL-1.1", "HPND-sell-variant"}


class Lists(unittest.TestCase):
    @staticmethod
    def documents():
        return [(package, json.loads(path.read_text(encoding="utf-8"))) for package, path in LISTS.items()]

    def test_every_file_is_listed_and_every_listed_file_is_there(self):
        for package, document in self.documents():
            tree = unpack_for(self, package)
            listed = [file["fileName"].removeprefix("./") for file in document["files"]]
            self.assertEqual(sorted(listed), files_of(tree))
            self.assertEqual(len(listed), len(set(listed)))
            for file in document["files"]:
                content = (tree / file["fileName"]).read_bytes()
                sums = {sum_["algorithm"]: sum_["checksumValue"] for sum_ in file["checksums"]}
                self.assertEqual(sums, {"SHA1": hashlib.sha1(content).hexdigest(),
                                        "SHA256": hashlib.sha256(content).hexdigest()}, file["fileName"])

    def test_document_has_what_the_standard_asks_for(self):
        namespaces = set()
        for _, document in self.documents():
            self.assertEqual(document["spdxVersion"], "SPDX-2.3")
            self.assertEqual(document["dataLicense"], "CC0-1.0")
            self.assertEqual(document["SPDXID"], "SPDXRef-DOCUMENT")
            self.assertRegex(document["documentNamespace"], r"^https://[^#\s]+$")
            self.assertRegex(document["creationInfo"]["created"], r"^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ$")
            for creator in document["creationInfo"]["creators"]:
                self.assertRegex(creator, r"^(Organization|Person|Tool): \S")
            ids = [part["SPDXID"] for part in document["packages"] + document["files"]]
            self.assertEqual(len(ids), len(set(ids)))
            for name in ids:
                self.assertRegex(name, r"^SPDXRef-[A-Za-z0-9.-]+$")
            for relation in document["relationships"]:
                for end in ["spdxElementId", "relatedSpdxElement"]:
                    self.assertIn(relation[end], {*ids, "SPDXRef-DOCUMENT"})
            namespaces.add(document["documentNamespace"])
        self.assertEqual(len(namespaces), len(set(LISTS.values())), "two lists with the same name")

    def test_every_file_belongs_to_one_component(self):
        for _, document in self.documents():
            owned = [relation["relatedSpdxElement"] for relation in document["relationships"]
                     if relation["relationshipType"] == "CONTAINS"]
            self.assertEqual(sorted(owned), sorted(file["SPDXID"] for file in document["files"]))

    def test_every_component_tells_version_licence_and_source(self):
        for _, document in self.documents():
            own = {text["licenseId"] for text in document["hasExtractedLicensingInfos"]}
            for part in document["packages"]:
                self.assertRegex(part["versionInfo"], r"^\d")
                for licence in re.split(r" (?:AND|OR|WITH) ", part["licenseDeclared"]):
                    self.assertIn(licence, KNOWN_LICENCES | own)
                self.assertTrue(part["supplier"].startswith("Organization: "))
                if part["name"] == "velmor":
                    self.assertEqual(part["versionInfo"], FULL_VERSION)
                    continue
                (where,) = part["externalRefs"]
                self.assertRegex(where["referenceLocator"], r"^pkg:(deb/debian|npm)/\S+@" + re.escape(part["versionInfo"]))
                self.assertTrue(part["sourceInfo"])

    def test_verification_code_is_that_of_the_files(self):
        for _, document in self.documents():
            sha1 = {file["SPDXID"]: file["checksums"][0]["checksumValue"] for file in document["files"]}
            for part in document["packages"]:
                mine = sorted(sha1[relation["relatedSpdxElement"]] for relation in document["relationships"]
                              if relation["relationshipType"] == "CONTAINS" and relation["spdxElementId"] == part["SPDXID"])
                self.assertEqual(part["filesAnalyzed"], bool(mine))
                if mine:
                    self.assertEqual(part["packageVerificationCode"]["packageVerificationCodeValue"],
                                     hashlib.sha1("".join(mine).encode()).hexdigest())

    def test_whatever_is_linked_is_a_component(self):
        # A name that the list knows for each library that Debian's package depends on.
        known = {"libqt5": "qtbase", "libqt5svg5": "qtsvg", "libssl3": "openssl", "libfontconfig1": "fontconfig",
                 "qttranslations5": None}
        system = re.compile(r"^(libc6|libgcc-s1|libstdc\+\+6)$")
        for package, document in self.documents():
            if package.suffix != ".deb":
                continue
            names = {part["name"] for part in document["packages"]}
            for needed in re.findall(r"(?:^|[,|] )([a-z0-9.+-]+)", run("dpkg-deb", "-f", package, "Depends")):
                if system.match(needed):
                    continue
                owner = next(owner for start, owner in sorted(known.items(), reverse=True) if needed.startswith(start))
                self.assertTrue(owner is None or owner in names, needed)


class Sums(unittest.TestCase):
    def test_sums_are_those_of_all_that_lies_there(self):
        lines = (PACKAGES / "SHA256SUMS").read_text(encoding="ascii").splitlines()
        told = dict(reversed(line.split("  ")) for line in lines)
        there = [path for path in PACKAGES.iterdir() if not path.name.startswith("SHA256SUMS")]
        self.assertEqual(sorted(told), sorted(path.name for path in there))
        self.assertLessEqual({package.name for package in LISTS}, set(told))
        for path in there:
            self.assertEqual(told[path.name], hashlib.sha256(path.read_bytes()).hexdigest(), path.name)


if __name__ == "__main__":
    unittest.main()
