#!/usr/bin/env python3
"""What a desktop, man and a shell are told of the programs, tried with their own tools: installed_test.py BUILD_DIRECTORY"""

import configparser
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
PACKAGING = ROOT / "packaging"
BUILD = Path(sys.argv.pop() if len(sys.argv) > 1 else "build/release").resolve()
PAGES = BUILD / "packaging/pages"
METAINFO = BUILD / "packaging/org.example.melvane.metainfo.xml"
DESKTOP = PACKAGING / "melvane.desktop"
JOB = "application/x-melvane-job"


def words(*command, **options):
    """What the command says, which has to end well."""
    done = subprocess.run(command, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, **options)
    assert done.returncode == 0, f"{command}: {done.stdout}"
    return done.stdout


def completed(program, line, folder):
    """What bash offers for the last word of the line, with the files of the folder."""
    script = f"""
        source /usr/share/bash-completion/bash_completion
        source {PAGES / program}
        COMP_LINE=$1 COMP_POINT=${{#1}} COMP_TYPE=9 COMP_KEY=9
        read -ra COMP_WORDS <<<"$1"
        [[ $1 == *' ' ]] && COMP_WORDS+=('')
        COMP_CWORD=$((${{#COMP_WORDS[@]}} - 1))
        _{program.replace('-', '_')} 2>/dev/null
        printf '%s\\n' "${{COMPREPLY[@]}}"
    """
    return set(words("bash", "-c", script, "bash", line, cwd=folder).split("\n")) - {""}


class Installed(unittest.TestCase):
    def setUp(self):
        self.folder = Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, self.folder)

    def told_type(self, name, content="?", attribute="standard::fast-content-type"):
        (self.folder / name).write_text(content)
        told = words("gio", "info", "-a", attribute, self.folder / name,
                     env=os.environ | {"XDG_DATA_HOME": str(self.folder / "data")})
        return re.search(attribute + r": (\S+)", told).group(1)

    def test_desktop_opens_what_the_program_takes(self):
        self.assertEqual(words("desktop-file-validate", DESKTOP), "")
        packages = self.folder / "data/mime/packages"
        packages.mkdir(parents=True)
        shutil.copy(PACKAGING / "melvane-mime.xml", packages)
        words("update-mime-database", self.folder / "data/mime")
        self.assertEqual(self.told_type("nameless", '{\n    "balance": [0, 0],\n    "melvane job": 1}',
                                        "standard::content-type"), JOB)
        self.assertNotEqual(self.told_type("other", "{\"a\": 1}", "standard::content-type"), JOB)
        desktop = configparser.ConfigParser(interpolation=None)
        desktop.read(DESKTOP, encoding="utf-8")
        opened = set(desktop["Desktop Entry"]["MimeType"].strip(";").split(";"))
        endings = re.search(r"_filedir '@\((.*)\)'", (PAGES / "melvane").read_text()).group(1).split("|")
        self.assertGreater(len(endings), 30)
        told = {ending: self.told_type("x." + ending) for ending in endings}
        self.assertEqual(told["melvane"], JOB)
        sound = {kind for kind in told.values() if kind.startswith("audio/") or kind == JOB}
        self.assertLessEqual(sound, opened)

    def test_metainfo(self):
        self.assertIn("successful", words("appstreamcli", "validate", "--no-net", "--no-color", METAINFO))
        pictures = re.findall(r"/screenshots/(.*\.png)</image>", METAINFO.read_text(encoding="utf-8"))
        self.assertEqual([name for name in pictures if not (ROOT / "docs/screenshots" / name).is_file()], [])
        self.assertGreater(len(pictures), 3)

    def test_manual_pages_tell_of_every_option(self):
        for program in ("melvane", "melvane-mix"):
            page = PAGES / (program + ".1")
            self.assertEqual(words("mandoc", "-T", "lint", "-W", "warning", page), "")
            shown = words("mandoc", "-T", "ascii", "-O", "width=500", page)
            shown = re.sub(".\b", "", shown)
            help_text = words(BUILD / program, "--help")
            options = re.findall(r"^  (--\S+) .{0,22}  (\S.*)$", help_text, re.MULTILINE)
            self.assertGreater(len(options), 1)
            for option, meaning in options:
                self.assertRegex(shown, rf"(?m)^ +{option}\b")
                self.assertIn(meaning, shown)

    def test_completion(self):
        for name in ("a.melvane", "a.mp3", "a.KAR", "a.sf2", "a.txt"):
            (self.folder / name).touch()
        (self.folder / "b").mkdir()
        tried = {
            "--chan": {"--channel-volume", "--channel-balance"},
            "--job ": {"a.melvane", "b"},
            "--soundfont ": {"a.sf2", "b"},
            "--preset So": {"Soft", "Soft Rock"},
            "--sync ": {"auto"},
            "--volume ": set(),
            "--quiet ": {"a.mp3", "a.KAR", "b"},
        }
        for line, offered in tried.items():
            self.assertEqual(completed("melvane-mix", "melvane-mix " + line, self.folder), offered, line)
        self.assertEqual(completed("melvane", "melvane a", self.folder), {"a.melvane", "a.mp3", "a.KAR"})


if __name__ == "__main__":
    unittest.main()
