"""README and guide beside what they speak of: programs that are built and run, the tool's options, files, the header."""
import os
import pathlib
import re
import subprocess
import textwrap
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
PAGES = [ROOT / "README.md", ROOT / "CONTRIBUTING.md", *sorted((ROOT / "docs").glob("*.md")),
         *sorted((ROOT / "docs" / "guide").glob("*.md"))]
FOR_USERS = [page for page in PAGES if page.name in ("README.md", "guide.md") or page.parent.name == "guide"]
TOOL = os.environ.get("TARN_TOOL")


def fences(page, *languages):
    """The code blocks of these languages."""
    for language, text in re.findall(r"^```(\w+)\n(.*?)^```$", page.read_text(), re.M | re.S):
        if language in languages:
            yield text


def pieces(text):
    """Runs of lines between blank ones, without their common indentation."""
    return [textwrap.dedent(piece).strip("\n") for piece in re.split(r"\n\s*\n", text) if piece.strip()]


class Documents(unittest.TestCase):
    def test_fragments_stand_in_programs_that_are_run(self):
        programs = [p for folder in ("examples", "examples/guide") for p in (ROOT / folder).glob("*.c*")]
        lines = {program: [line.strip() for line in program.read_text().splitlines()] for program in programs}
        found = 0
        for page in FOR_USERS:
            for piece in (piece for text in fences(page, "c", "cpp") for piece in pieces(text)):
                wanted = [line.strip() for line in piece.splitlines()]
                self.assertTrue(any(wanted == have[i:i + len(wanted)] for have in lines.values()
                                    for i in range(len(have))), f"{page.name}: no program has\n{piece}")
                found += 1
        self.assertGreater(found, 4)
        for program in programs:
            listed = (program.parent / "CMakeLists.txt").read_text()
            self.assertIn(program.name, listed, "a program that is not built")

    @unittest.skipUnless(TOOL, "the tool is not built")
    def test_commands_are_those_of_the_tool_and_the_makefile(self):
        targets = " ".join(re.findall(r"^\.PHONY: (.*)$", (ROOT / "Makefile").read_text(), re.M)).split()
        helps = {}
        commands = [line.split("#")[0].split() for page in PAGES for text in fences(page, "sh")
                    for line in text.splitlines() if line.strip()]
        for words in commands:
            if words[:1] == ["make"]:
                self.assertIn(words[1], targets)
            elif words[:1] == ["tarn"] and len(words) > 1:
                if words[1] not in helps:
                    helps[words[1]] = subprocess.run([TOOL, words[1], "--help"], check=True, capture_output=True,
                                                     text=True).stdout
                for option in (word for word in words[2:] if word.startswith("--")):
                    self.assertRegex(helps[words[1]], rf"(?m)^  \S*{option}\b", " ".join(words))
            elif words[0].startswith("scripts/"):
                self.assertTrue((ROOT / words[0]).exists(), words[0])
        self.assertIn("bench", helps)
        for page in PAGES:
            for target in re.findall(r"`make ([\w-]+)", page.read_text()):
                self.assertIn(target, targets, page.name)

    def test_links_lead_to_files_and_headings(self):
        for page in PAGES:
            text = re.sub(r"^```.*?^```$", "", page.read_text(), flags=re.M | re.S)
            for target in re.findall(r"\]\(([^)]+)\)", text):
                file, _, heading = target.partition("#")
                to = page.parent / file if file else page
                if "://" in target:
                    continue
                self.assertTrue(to.exists(), f"{page.name}: {target}")
                if heading:
                    anchors = [re.sub(r"[^\w\- ]", "", line).strip().lower().replace(" ", "-")
                               for line in re.findall(r"^#+ (.*)$", to.read_text(), re.M)]
                    self.assertIn(heading, anchors, f"{page.name}: {target}")

    def test_the_table_of_routines_is_that_of_the_header(self):
        header = (ROOT / "include" / "tarn_lapack.h").read_text()
        declared = set(re.findall(r"^TARN_API tarnStatus (tarn(?:Device)?[SDCZ][a-z0-9]+)\(", header, re.M))
        rows = re.findall(r"^\| ((?:`[a-z0-9]+`(?:, )?)+) \| ([SDCZ ]+(?:; [SDCZ ]+)?) \|", (ROOT / "README.md").read_text(),
                          re.M)
        listed = set()
        for names, types in rows:
            # `symv`, `hemv` | S D; C Z: the types of each.
            for name, letters in zip(re.findall(r"`(\w+)`", names), types.split("; "), strict=True):
                listed |= {f"tarn{form}{letter}{name}" for form in ("", "Device") for letter in letters.split()}
        self.assertEqual(listed, declared)

    def test_infos_of_wrong_arguments_are_their_positions(self):
        checked = 0
        for name in ("tarn_core.h", "tarn_lapack.h", "tarn_refine.h"):
            text = (ROOT / "include" / name).read_text()
            for comment, arguments in re.findall(r"/\*\*((?:(?!\*/).)*)\*/\nTARN_API [^;(]*\(([^;]*)\);", text, re.S):
                names = [re.search(r"(\w+)\s*$", argument).group(1) for argument in arguments.split(",")]
                for infos in re.findall(r"@retval tarnArgumentError((?:(?!@retval|@par).)*)", comment, re.S):
                    for position, argument in re.findall(r"-(\d+):? (\w+)", infos):
                        if argument in names:
                            self.assertEqual(names.index(argument) + 1, int(position), infos)
                            checked += 1
        self.assertGreater(checked, 100)


if __name__ == "__main__":
    unittest.main()
