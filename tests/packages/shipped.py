"""Where the packages are and what is in them, for the tests beside this file."""

import re
import subprocess
import tempfile
import zipfile
from pathlib import Path

SOURCE = Path(__file__).resolve().parents[2]
PACKAGES = SOURCE / "build/packages"
FULL_VERSION = re.search(r"^project\(.* VERSION ([\d.]+)", (SOURCE / "CMakeLists.txt").read_text(encoding="utf-8"),
                         re.M).group(1)
VERSION = FULL_VERSION.rpartition(".")[0]

MSI = PACKAGES / f"velmor-{VERSION}-x64.msi"
ZIP = PACKAGES / f"velmor-{VERSION}-x64.zip"
DEB = PACKAGES / f"velmor_{VERSION}_amd64.deb"
DEMO_ZIP = PACKAGES / f"velmor-demo-{VERSION}-x64.zip"
DEMO_DEB = PACKAGES / f"velmor-demo_{VERSION}_amd64.deb"
# Each package with the list of what it ships.
LISTS = {
    MSI: PACKAGES / f"velmor-{VERSION}-x64.spdx.json",
    ZIP: PACKAGES / f"velmor-{VERSION}-x64.spdx.json",
    DEB: PACKAGES / f"velmor_{VERSION}_amd64.spdx.json",
    DEMO_ZIP: PACKAGES / f"velmor-demo-{VERSION}-x64.spdx.json",
    DEMO_DEB: PACKAGES / f"velmor-demo_{VERSION}_amd64.spdx.json",
}


def run(*command, **options):
    """What a command prints; if it fails, the test does, with all that it said."""
    done = subprocess.run([*map(str, command)], capture_output=True, text=True, **options)
    assert done.returncode == 0, f"{command[0]}: {done.returncode}\n{done.stdout}{done.stderr}"
    return done.stdout


def unpack(package, folder):
    """The package's content as it is installed. Of the folder that archives for Windows have at their top, the inside."""
    folder = Path(folder)
    if package.suffix == ".deb":
        run("dpkg-deb", "-x", package, folder)
        return folder
    if package.suffix == ".msi":
        run("msiextract", "-C", folder, package)
    else:
        zipfile.ZipFile(package).extractall(folder)
    (top,) = folder.iterdir()
    return top


def unpack_for(case, package):
    """The same in a folder that goes when the test case or class is through."""
    folder = tempfile.TemporaryDirectory()
    (case.addClassCleanup if isinstance(case, type) else case.addCleanup)(folder.cleanup)
    return unpack(package, folder.name)


def files_of(tree):
    """Paths of the plain files, without links."""
    return sorted(p.relative_to(tree).as_posix() for p in tree.rglob("*") if p.is_file() and not p.is_symlink())
