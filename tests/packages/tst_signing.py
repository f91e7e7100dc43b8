#!/usr/bin/env python3
"""Signatures by packaging/sign with keys that are made for the test: from a file, and from a token."""

import http.server
import os
import re
import shutil
import subprocess
import tempfile
import threading
import unittest
from pathlib import Path

from shipped import MSI, SOURCE, ZIP, run, unpack_for

SIGN = SOURCE / "packaging/sign"
PASSWORD = "hasło z blankiem"
SOFT_TOKEN = Path("/usr/lib/softhsm/libsofthsm2.so")


class Keys:
    """A certificate authority with a signer and a time-stamp service, in a folder that goes with the test case."""

    def __init__(self, case):
        folder = tempfile.TemporaryDirectory()
        case.addClassCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        self.authority = self.folder / "authority.pem"
        self.openssl("req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "30", "-subj", "/CN=Test authority",
                     "-keyout", "authority.key", "-out", "authority.pem")
        self.make("signer", "codeSigning")
        self.make("stamps", "critical,timeStamping")
        (self.folder / "password").write_text(PASSWORD, encoding="utf-8")
        self.openssl("pkcs12", "-export", "-inkey", "signer.key", "-in", "signer.pem", "-certfile", "authority.pem",
                     "-passout", "file:password", "-out", "signer.p12")

    def openssl(self, *words):
        return run("openssl", *words, cwd=self.folder)

    def make(self, name, usage):
        self.openssl("req", "-newkey", "rsa:2048", "-nodes", "-subj", f"/CN=Test {name}", "-keyout", f"{name}.key",
                     "-out", f"{name}.csr")
        (self.folder / f"{name}.ext").write_text(f"extendedKeyUsage={usage}\nkeyUsage=digitalSignature\n")
        self.openssl("x509", "-req", "-in", f"{name}.csr", "-CA", "authority.pem", "-CAkey", "authority.key", "-days", "20",
                     "-extfile", f"{name}.ext", "-out", f"{name}.pem")

    def environment(self):
        return {"VELMOR_SIGN_KEY": str(self.folder / "signer.p12"),
                "VELMOR_SIGN_PASSWORD": str(self.folder / "password")}


def sign(what, target, environment):
    clean = {name: value for name, value in os.environ.items() if not name.startswith("VELMOR_SIGN_")}
    return subprocess.run([SIGN, what, str(target)], env={**clean, **environment}, capture_output=True, text=True)


class Signing(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.keys = Keys(cls)
        cls.tree = unpack_for(cls, ZIP)

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name) / "to be signed"
        self.folder.mkdir()

    def lay(self, *names):
        for name in names:
            shutil.copy(self.tree / "64" / name, self.folder)

    def verify(self, file):
        return subprocess.run(["osslsigncode", "verify", "-CAfile", self.keys.authority, "-TSA-CAfile", self.keys.authority,
                               "-in", file], capture_output=True, text=True)

    def assert_signed(self, file):
        done = self.verify(file)
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        self.assertIn("CN=Test signer", done.stdout + done.stderr)

    def test_without_a_key_it_says_so_and_changes_nothing(self):
        self.lay("Manager.exe")
        before = (self.folder / "Manager.exe").read_bytes()
        done = sign("programs", self.folder, {})
        self.assertEqual(done.returncode, 0)
        self.assertRegex(done.stdout, r"^Not signed, since VELMOR_SIGN_KEY names no key: ")
        self.assertEqual((self.folder / "Manager.exe").read_bytes(), before)

    def test_programs_and_dlls_are_signed_once(self):
        self.lay("Manager.exe", "Qt5Svg.dll", "qt.conf")
        self.assertNotEqual(self.verify(self.folder / "Manager.exe").returncode, 0)

        self.assertEqual(sign("programs", self.folder, self.keys.environment()).returncode, 0)

        for name in ["Manager.exe", "Qt5Svg.dll"]:
            self.assert_signed(self.folder / name)
        self.assertEqual((self.folder / "qt.conf").read_bytes(), (self.tree / "64/qt.conf").read_bytes())
        content = {path: path.read_bytes() for path in self.folder.iterdir()}
        again = sign("programs", self.folder, self.keys.environment())
        self.assertEqual((again.returncode, again.stdout), (0, ""))
        self.assertEqual({path: path.read_bytes() for path in self.folder.iterdir()}, content)

    def test_change_of_a_signed_program_is_seen(self):
        self.lay("Qt5Svg.dll")
        self.assertEqual(sign("programs", self.folder, self.keys.environment()).returncode, 0)
        file = self.folder / "Qt5Svg.dll"
        content = bytearray(file.read_bytes())
        content[0x1000] ^= 1
        file.write_bytes(content)
        self.assertNotEqual(self.verify(file).returncode, 0)

    def test_installer_package_is_signed(self):
        package = Path(shutil.copy(MSI, self.folder))
        self.assertEqual(sign("package", package, self.keys.environment()).returncode, 0)
        self.assert_signed(package)
        self.assertEqual(run("msiinfo", "export", package, "File"), run("msiinfo", "export", MSI, "File"))

    def test_sums_get_a_signature_beside_them(self):
        sums = self.folder / "SHA256SUMS"
        sums.write_text("00  file\n")
        self.assertEqual(sign("sums", sums, self.keys.environment()).returncode, 0)
        check = ["openssl", "cms", "-verify", "-inform", "PEM", "-in", f"{sums}.p7s", "-content", sums, "-binary",
                 "-CAfile", self.keys.authority, "-purpose", "any", "-out", "/dev/null"]
        run(*check)
        sums.write_text("01  file\n")
        self.assertNotEqual(subprocess.run([*map(str, check)], capture_output=True).returncode, 0)

        # A new one of no key does not lie beside an old signature.
        self.assertEqual(sign("sums", sums, {}).returncode, 0)
        self.assertFalse(Path(f"{sums}.p7s").exists())

    def test_signature_carries_a_time_stamp_of_the_service_that_is_named(self):
        self.lay("Qt5Svg.dll")
        with stamp_service(self.keys) as (address, asked):
            done = sign("programs", self.folder, {**self.keys.environment(), "VELMOR_SIGN_TIMESTAMP": address})
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(len(asked), 1)
        # Of the signer of a stamp not every version of the tool tells.
        signature = self.folder.parent / "signature"
        run("osslsigncode", "extract-signature", "-in", self.folder / "Qt5Svg.dll", "-out", signature)
        self.assertTrue(b"Test stamps" in signature.read_bytes(), "there is no stamp in the signature")

    def test_key_that_cannot_be_had_stops_it(self):
        self.lay("Qt5Svg.dll")
        before = (self.folder / "Qt5Svg.dll").read_bytes()
        wrong = self.folder / "password"
        wrong.write_text("inne")
        for environment in [{"VELMOR_SIGN_KEY": "/nowhere.p12"},
                            {**self.keys.environment(), "VELMOR_SIGN_PASSWORD": str(wrong)},
                            {**self.keys.environment(), "VELMOR_SIGN_TIMESTAMP": "http://127.0.0.1:9/"}]:
            done = sign("programs", self.folder, environment)
            self.assertNotEqual(done.returncode, 0, environment)
            self.assertRegex(done.stderr, r"(?m)^sign: ", environment)
            self.assertNotIn(PASSWORD, done.stdout + done.stderr)
            self.assertEqual((self.folder / "Qt5Svg.dll").read_bytes(), before)

    @unittest.skipUnless(SOFT_TOKEN.exists(), "needs a token in software (Debian: softhsm2)")
    def test_key_may_be_on_a_token(self):
        token = self.folder.parent / "token"
        token.mkdir()
        (token / "conf").write_text(f"directories.tokendir = {token}\nlog.level = ERROR\n")
        environment = {**os.environ, "SOFTHSM2_CONF": str(token / "conf")}
        run("softhsm2-util", "--init-token", "--free", "--label", "signing", "--pin", "1234", "--so-pin", "5678",
            env=environment)
        keys = self.keys.folder
        self.keys.openssl("pkcs8", "-topk8", "-nocrypt", "-in", "signer.key", "-out", "signer.p8")
        run("softhsm2-util", "--import", keys / "signer.p8", "--token", "signing", "--label", "key", "--id", "01", "--pin",
            "1234", env=environment)
        chain = keys / "chain.pem"
        chain.write_bytes((keys / "signer.pem").read_bytes() + (keys / "authority.pem").read_bytes())
        given = {"SOFTHSM2_CONF": str(token / "conf"), "VELMOR_SIGN_MODULE": str(SOFT_TOKEN),
                 "VELMOR_SIGN_KEY": "pkcs11:token=signing;object=key;type=private?pin-value=1234",
                 "VELMOR_SIGN_CERTIFICATE": str(chain)}
        self.lay("Qt5Svg.dll")
        sums = self.folder / "SHA256SUMS"
        sums.write_text("00  file\n")

        for what, target in [("programs", self.folder), ("sums", sums)]:
            done = sign(what, target, given)
            self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
            self.assertNotIn("1234", done.stdout + done.stderr)

        self.assert_signed(self.folder / "Qt5Svg.dll")
        run("openssl", "cms", "-verify", "-inform", "PEM", "-in", f"{sums}.p7s", "-content", sums, "-binary",
            "-CAfile", self.keys.authority, "-purpose", "any", "-out", "/dev/null")


class stamp_service:
    """A time-stamp service at an address of this machine, for as long as the block runs."""

    def __init__(self, keys):
        folder = keys.folder
        (folder / "serial").write_text("01\n")
        (folder / "ts.cnf").write_text(
            f"[tsa]\ndefault_tsa=one\n[one]\nserial={folder}/serial\nsigner_digest=sha256\ndefault_policy=1.2.3.4.1\n"
            "digests=sha256,sha384,sha512,sha1\ness_cert_id_alg=sha256\n")
        self.asked = asked = []

        class Handler(http.server.BaseHTTPRequestHandler):
            def do_POST(self):
                query = folder / "query.tsq"
                query.write_bytes(self.rfile.read(int(self.headers["Content-Length"])))
                asked.append(query)
                keys.openssl("ts", "-reply", "-config", "ts.cnf", "-section", "one", "-queryfile", "query.tsq", "-signer",
                             "stamps.pem", "-inkey", "stamps.key", "-chain", "authority.pem", "-out", "reply.tsr")
                reply = (folder / "reply.tsr").read_bytes()
                self.send_response(200)
                self.send_header("Content-Type", "application/timestamp-reply")
                self.send_header("Content-Length", str(len(reply)))
                self.end_headers()
                self.wfile.write(reply)

            def log_message(self, *_):
                pass

        self.server = http.server.HTTPServer(("127.0.0.1", 0), Handler)

    def __enter__(self):
        threading.Thread(target=self.server.serve_forever, daemon=True).start()
        return f"http://127.0.0.1:{self.server.server_port}/", self.asked

    def __exit__(self, *_):
        self.server.shutdown()
        self.server.server_close()


if __name__ == "__main__":
    unittest.main()
