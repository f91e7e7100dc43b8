#!/usr/bin/env python3
"""What lies in the packages for Windows, and the tables of the Windows Installer package."""

import re
import unittest
import zipfile

from shipped import DEMO_ZIP, FULL_VERSION, MSI, VERSION, ZIP, files_of, run, unpack_for

MEBIBYTE = 1 << 20
# Bits of msidbComponentAttributes and msidbUpgradeAttributes.
IS_64_BIT, MIN_INCLUSIVE, MAX_INCLUSIVE, ONLY_DETECT = 256, 256, 512, 2


def table(name):
    """Rows of a table, each a dict by column."""
    lines = [line.split("\t") for line in run("msiinfo", "export", MSI, name).replace("\r", "").split("\n") if line]
    return [dict(zip(lines[0], row)) for row in lines[3:]]


class Installer(unittest.TestCase):
    def test_sizes(self):
        self.assertLessEqual(MSI.stat().st_size, 16 * MEBIBYTE)
        tree = unpack_for(self, MSI)
        self.assertLessEqual(sum((tree / name).stat().st_size for name in files_of(tree)), 42 * MEBIBYTE)

    def test_holds_what_the_zip_holds(self):
        installed, unpacked = unpack_for(self, MSI), unpack_for(self, ZIP)
        self.assertEqual(files_of(installed), files_of(unpacked))
        for name in files_of(installed):
            self.assertEqual((installed / name).read_bytes(), (unpacked / name).read_bytes(), name)

    def test_product_has_nothing_of_the_stand_ins(self):
        names = files_of(unpack_for(self, MSI))
        self.assertEqual([name for name in names if re.search(r"devkit|pkcs11|velmor[-_](sim|monitor|can|send|panel)", name)],
                         [])
        # Templates for group policies come along.
        self.assertLessEqual({"policies/velmor.admx", "policies/pl-PL/velmor.adml", "policies/en-US/velmor.adml"}, set(names))

    def test_every_component_is_of_64_bits(self):
        for component in table("Component"):
            self.assertTrue(int(component["Attributes"]) & IS_64_BIT, component["Component"])

    def test_older_and_same_versions_are_replaced_and_newer_ones_only_found(self):
        rows = {row["ActionProperty"]: row for row in table("Upgrade")}
        older, newer = rows["OLDERVERSION"], rows["NEWERVERSION"]
        self.assertEqual((older["VersionMax"], int(older["Attributes"])), (FULL_VERSION, MIN_INCLUSIVE | MAX_INCLUSIVE))
        self.assertEqual((newer["VersionMin"], int(newer["Attributes"])), (FULL_VERSION, ONLY_DETECT))
        self.assertIn("NOT NEWERVERSION", [row["Condition"] for row in table("LaunchCondition")])

    def test_properties_of_the_systems_list(self):
        properties = {row["Property"]: row["Value"] for row in table("Property")}
        self.assertEqual(properties["ProductVersion"], FULL_VERSION)
        self.assertEqual(properties["Manufacturer"], "Ostrel")
        self.assertEqual(properties["ALLUSERS"], "1")
        self.assertEqual(properties["ARPHELPLINK"], "https://pomoc.velmor.example/")
        self.assertEqual(properties["ARPPRODUCTICON"], "velmor.ico")
        self.assertEqual(properties["REBOOT"], "ReallySuppress")
        tree = unpack_for(self, MSI)
        total = sum((tree / name).stat().st_size for name in files_of(tree))
        self.assertAlmostEqual(int(properties["ARPSIZE"]), total / 1024, delta=1)

    def test_nothing_is_run_and_nothing_is_set_for_others(self):
        for name in ["ServiceInstall", "ServiceControl", "RemoveFile"]:
            self.assertEqual(table(name), [], name)
        self.assertNotIn("Environment", run("msiinfo", "tables", MSI).split())
        # Its own folder, for the next time; the only action sets a property, and runs no code.
        (value,) = table("Registry")
        self.assertEqual((value["Key"], value["Name"], value["Value"]), ("Software\\velmor\\setup", "folder", "[INSTALLDIR]"))
        (action,) = table("CustomAction")
        self.assertEqual((action["Type"], action["Source"], action["Target"]), ("51", "INSTALLDIR", "[REMEMBEREDDIR]"))

    def test_folder_of_the_last_time_is_known_before_folders_are_set(self):
        for name in ["InstallExecuteSequence", "InstallUISequence"]:
            order = {row["Action"]: int(row["Sequence"]) for row in table(name)}
            self.assertLess(order["AppSearch"], order["UseRememberedDir"])
            self.assertLess(order["UseRememberedDir"], order["CostInitialize"])

    def test_what_fails_half_way_is_taken_back(self):
        # Room is counted before anything is written, and the older version goes within the transaction.
        tree = unpack_for(self, MSI)
        self.assertEqual(sorted(int(row["FileSize"]) for row in table("File")),
                         sorted((tree / name).stat().st_size for name in files_of(tree)))
        order = {row["Action"]: int(row["Sequence"]) for row in table("InstallExecuteSequence")}
        steps = ["CostInitialize", "FileCost", "CostFinalize", "InstallValidate", "InstallInitialize",
                 "RemoveExistingProducts", "InstallFiles", "InstallFinalize"]
        self.assertEqual(sorted(steps, key=order.get), steps)
        self.assertNotIn("DisableRollback", order)
        self.assertNotIn("DISABLEROLLBACK", {row["Property"] for row in table("Property")})

    def test_entry_of_the_menu_has_its_name_from_the_program(self):
        (entry,) = table("Shortcut")
        self.assertEqual(entry["Directory_"], "ProgramMenuFolder")
        self.assertEqual(entry["DisplayResourceDLL"], "[#f_64_Manager.exe]")
        self.assertEqual(entry["DisplayResourceId"], "1")

    def test_files_with_a_version_have_no_hash_and_the_others_have_one(self):
        hashed = {row["File_"] for row in table("MsiFileHash")}
        for row in table("File"):
            self.assertNotEqual(bool(row["Version"]), row["File"] in hashed, row["File"])

    def test_summary_says_for_which_systems(self):
        told = run("msiinfo", "suminfo", MSI)
        self.assertIn("Template: x64;1045", told)
        self.assertIn("Author: Ostrel", told)


class Demonstration(unittest.TestCase):
    def test_is_the_product_with_the_stand_ins(self):
        product, demo = (unpack_for(self, package) for package in [ZIP, DEMO_ZIP])
        # What an administrator presets is nothing for a training.
        shared = {name for name in files_of(product) if not name.startswith("policies/")}
        more = set(files_of(demo)) - shared
        self.assertLessEqual(shared, set(files_of(demo)))
        self.assertEqual({name for name in more if not name.startswith("devkit/")},
                         {"CZYTAJ.txt", "velmor-demo.exe", "64/velmor-pkcs11-64.dll", "64/velmor_can.exe",
                          "64/velmor_monitor.exe", "64/velmor_send.exe", "64/velmor-panel.exe"})
        self.assertIn("devkit/velmor-sim.exe", more)
        # All the same but the program itself, which has other places.
        self.assertEqual([name for name in sorted(shared)
                          if (product / name).read_bytes() != (demo / name).read_bytes()], ["64/Manager.exe"])

    def test_text_for_the_trainer_is_of_this_version(self):
        text = (unpack_for(self, DEMO_ZIP) / "CZYTAJ.txt").read_bytes().decode("utf-8")
        self.assertIn(VERSION, text)
        self.assertEqual(text.count("\n"), text.count("\r\n"))


class Names(unittest.TestCase):
    def test_every_archive_unpacks_into_one_folder(self):
        for package, folder in [(ZIP, "velmor/"), (DEMO_ZIP, "velmor-demo/")]:
            for name in zipfile.ZipFile(package).namelist():
                self.assertTrue(name.startswith(folder) and ".." not in name.split("/"), name)


if __name__ == "__main__":
    unittest.main()
