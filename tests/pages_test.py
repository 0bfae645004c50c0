#!/usr/bin/env python3
"""The pages for the browser, as built and as installed: pages_test.py BUILD_DIRECTORY

Links, anchors and pictures lead somewhere, and both languages say the same. What is said of the sources to those who want
to change them is there, too.
"""

import gzip
import re
import subprocess
import sys
import tempfile
import unittest
from html.parser import HTMLParser
from pathlib import Path
from urllib.parse import unquote, urlsplit

ROOT = Path(__file__).resolve().parent.parent
PAGES = ("home", "help", "about")
LANGUAGES = ("en", "pl")
WITHOUT_END = ("meta", "img", "br", "hr")
BUILD = Path()  # Becomes the build directory.


class Page(HTMLParser):
    def __init__(self, file):
        super().__init__()
        self.links, self.pictures, self.anchors, self.headings, self.faults = [], [], [], [], []
        self.language = self.title = ""
        self.shape = []  # the elements in their order, without what they say
        self.open = []
        self.feed(file.read_text(encoding="utf-8"))
        self.close()

    def handle_starttag(self, tag, attributes):
        given = dict(attributes)
        if tag == "html":
            self.language = given["lang"]
        if "href" in given:
            self.links.append(given["href"])
        if "id" in given:
            self.anchors.append(given["id"])
        if tag == "img":
            self.pictures += [given["src"]] + [one.split()[0] for one in given["srcset"].split(",")]
            if not given["alt"]:
                self.faults.append(f"{given['src']} says nothing to who can't see it")
        if tag not in ("code", "em", "strong"):
            self.shape.append(re.sub(r"-(en|pl)-", "-", given["src"]) if tag == "img" else tag)
        if tag not in WITHOUT_END:
            self.open.append(tag)

    def handle_startendtag(self, tag, attributes):
        self.handle_starttag(tag, attributes)

    def handle_endtag(self, tag):
        if not self.open or self.open.pop() != tag:
            self.faults.append(f"</{tag}> ends nothing, line {self.getpos()[0]}")

    def handle_data(self, data):
        if self.open and self.open[-1] == "title":
            self.title += data
        if self.open and self.open[-1] in ("h1", "h2"):
            self.headings.append(data)
        if "style" not in self.open and re.search(r"@\w+@|\]\(", data):
            self.faults.append(f"left over: {data.strip()}")


class Pages(unittest.TestCase):
    def check(self, folder):
        pages = {f"{name}.{language}.html": Page(folder / f"{name}.{language}.html")
                 for name in PAGES for language in LANGUAGES}
        shown = set()
        for name, page in pages.items():
            with self.subTest(page=name, folder=folder):
                self.assertEqual(page.faults + page.open, [])
                self.assertEqual(page.language, name.split(".")[1])
                self.assertEqual(page.title, page.headings[0])
                self.assertEqual(len(page.anchors), len(set(page.anchors)))
                for link in page.links:
                    self.check_link(folder, pages, name, link)
                for picture in page.pictures:
                    self.assertIn(f"-{page.language}-", picture)
                    self.assertTrue((folder / picture).read_bytes().startswith(b"\x89PNG"), picture)
                shown.update(page.pictures)
        for name in PAGES:
            english, polish = (pages[f"{name}.{language}.html"] for language in LANGUAGES)
            self.assertEqual(english.shape, polish.shape, name)
            self.assertFalse(set(english.headings[1:]) & set(polish.headings[1:]), f"{name}: not translated")
        there = {file.relative_to(folder).as_posix() for file in folder.rglob("*.png")}
        self.assertEqual(there, shown)

    def check_link(self, folder, pages, name, link):
        parts = urlsplit(link)
        if parts.scheme:
            self.assertEqual(parts.scheme, "https", link)
            self.assertTrue(parts.netloc, link)
            return
        target = unquote(parts.path) or name
        self.assertTrue((folder / target).is_file(), link)
        if parts.fragment:
            self.assertIn(unquote(parts.fragment), pages[target].anchors, link)

    def test_built(self):
        self.check(BUILD / "pages")

    def test_installed(self):
        with tempfile.TemporaryDirectory() as prefix:
            subprocess.run(["cmake", "--install", BUILD, "--prefix", prefix, "--component", "documents"], check=True,
                           stdout=subprocess.DEVNULL)
            (folder,) = Path(prefix).glob("share/doc/melvane")
            self.check(folder)
            with gzip.open(folder / "changelog.gz") as changes:
                self.assertEqual(changes.read(), (ROOT / "CHANGELOG.md").read_bytes())

    def test_contributing(self):
        told = re.findall(r"`([^`\n]+)`", (ROOT / "CONTRIBUTING.md").read_text(encoding="utf-8"))
        files = {one for one in told if re.fullmatch(r"[a-z_/.]*/[\w.-]*", one)}
        names = {one.split("::")[-1] for one in told
                 if re.fullmatch(r"\w+::\w+|[a-z]+[A-Z]\w+", one) and not one.endswith("Case")}
        self.assertGreater(len(files), 30)
        self.assertGreater(len(names), 10)
        self.assertEqual([one for one in files if not (ROOT / one).exists()], [])
        sources = "".join(file.read_text(encoding="utf-8") for room in {one.split("/")[0] for one in files}
                          for file in (ROOT / room).rglob("*") if file.suffix in (".h", ".cpp"))
        self.assertEqual([one for one in names if not re.search(rf"\b{one}\b", sources)], [])


if __name__ == "__main__":
    BUILD = Path(sys.argv.pop(1)).resolve()
    unittest.main()
