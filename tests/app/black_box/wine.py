"""What differs where the executable is the one for Windows, run by Wine."""

import os
import subprocess
import tempfile
import unittest
from pathlib import Path

EMULATOR = Path(__file__).resolve().parents[3] / "scripts" / "wine"
IS_USED = os.environ.get("PXSCHEDULER", "").startswith(str(EMULATOR))

# What the tests leave in the registry that they share.
KEYS = (
    r"HKEY_LOCAL_MACHINE\Software\WOW6432Node\Kestrova",
    r"HKEY_LOCAL_MACHINE\Software\WOW6432Node\ODBC\ODBC.INI",
    r"HKEY_CURRENT_USER\Software\Kestrova",
    r"HKEY_CURRENT_USER\Software\ODBC\ODBC.INI",
)

# Where Wine has what Windows keeps in the Credential Manager.
CREDENTIALS = r"HKEY_CURRENT_USER\Software\Wine\Credential Manager"

SHELL_FOLDERS = (
    r"HKEY_CURRENT_USER\Software\Microsoft\Windows\CurrentVersion\Explorer\User Shell Folders"
)

# Where the 32-bit view is, for a registry editor of 64 bits.
VIEW = (r"HKEY_LOCAL_MACHINE\Software", r"HKEY_LOCAL_MACHINE\Software\WOW6432Node")


def not_under(reason):
    """Skips a test for the Windows executable."""
    return unittest.skipIf(IS_USED, reason)


def path_text(path):
    return "Z:" + str(path).replace("/", "\\")


def words(arguments):
    """One argument a word: Wine puts an argument that is empty or holds blanks between quotation
    marks, which would then be part of the command line."""
    return " ".join(arguments).split()


def converted_file():
    """The file that a letter of the word processor is converted into."""
    return next(Path(os.environ["WINEPREFIX"]).glob("drive_c/users/*/Temp/scheduler.htm"))


def environment():
    return {
        "HOME": os.environ.get("HOME", "/"),
        "WINEPREFIX": os.environ["WINEPREFIX"],
        "WINEDEBUG": "-all",
        # Wine compares the times of its own files.
        "NO_FAKE_STAT": "1",
        # The driver manager of the host, which Wine's own hands everything to.
        **{name: os.environ[name] for name in ("ODBCSYSINI", "PXSCHEDULER_ODBC_DRIVER")
           if name in os.environ},
    }


def registry_text(lines):
    return "\r\n".join(["Windows Registry Editor Version 5.00", "", *lines]) + "\r\n"


def import_registry(folder, lines):
    """Makes these lines, in the 32-bit view, all that the product finds in Wine's registry."""
    home = path_text(folder / "home").replace("\\", "\\\\")
    edit_registry([*(f"[-{key}]" for key in KEYS), f"[{SHELL_FOLDERS}]", '"Personal"=-',
                   *(line.replace(*VIEW).replace("%USERPROFILE%", home) for line in lines)])


def forget_credentials():
    edit_registry([f"[-{CREDENTIALS}]"])


def edit_registry(lines):
    with tempfile.NamedTemporaryFile(suffix=".reg") as file:
        file.write(registry_text(lines).encode("utf-16"))
        file.flush()
        command = [EMULATOR, "regedit", "/S", path_text(file.name)]
        # Wine's editor has been seen to fail without a word where it is started beside other programs.
        for _ in range(3):
            edited = subprocess.run(command, timeout=60, stdin=subprocess.DEVNULL,
                                    stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            if edited.returncode == 0:
                return
        edited.check_returncode()
