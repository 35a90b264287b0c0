#!/usr/bin/env python3
"""Reads every program and library of a build, and of an installation of it, and the objects that they were linked
from. Says what is wrong with which file; exit code 1 then.
Usage: binaries_test.py READELF CMAKE BUILD SOURCE KIND ..., the kinds of protection that the build should have:
linked, fortified, probed (stacks of x86), and the compiler's flags. Run paths and stacks are read in any build."""
import json, os, re, subprocess, sys, tempfile

readelf, cmake, build, source = sys.argv[1:5]
has = set(sys.argv[5:]) - {""}
failures = []


def expect(right, path, wanted, got=""):
    if not right:
        failures.append(f"{path}: {got or 'does not have this'}, expected {wanted}")


def read(option, *paths):
    """What readelf prints, by file."""
    words = [readelf, "-W", option, *paths, "/dev/null"]  # names files only where it reads several
    text = subprocess.run(words, capture_output=True, text=True, env={**os.environ, "LC_ALL": "C"}).stdout
    texts = dict(re.findall(r"^File: (.*)\n([^\0]*?)(?=^File: |\Z)", text, re.M))
    for path in set(paths) - texts.keys():
        failures.append(f"{path}: {readelf} does not read it")
    return texts


def elf_files(folder):
    for place, _, names in os.walk(folder):
        for path in (os.path.join(place, name) for name in names):
            if os.path.isfile(path) and not os.path.islink(path):
                with open(path, "rb") as file:
                    if file.read(4) == b"\x7fELF":
                        yield path


# Of the program header and the dynamic section: what must be there.
PROTECTED = [
    (r"GNU_RELRO", "relocations that are read-only after loading"),
    (r"FLAGS.*\b(BIND_NOW|NOW)\b", "symbols bound at load time"),
    (r"Type: +DYN ", "code that runs at any address (-pie or -shared)"),
]
# What the large ones import. They have buffers and print; programs of tests may do without.
IMPORTS = [
    ("-fstack-protector-strong", r"\b__stack_chk_fail\b", "protected stacks (an import of __stack_chk_fail)"),
    ("fortified", r"\b__(?!stack)\w+_chk\b", "checked sizes (an import of __*_chk)"),
]
LARGE = r"/(qonvert|zorvan|libzorvan_alpha\.so|libzorvanGraphics_alpha\.so)$"
# Frames of more than a page are probed page by page: sub $4096, %rsp, then orq $0, (%rsp) (GCC) or movq (Clang).
PROBE = re.compile(rb"\x81\xec\x00\x10\x00\x00\x48?(\x83\x0c\x24\x00|\xc7\x04\x24\x00\x00\x00\x00)")
PROBED = r"/(qonvert|libzorvanGraphics_alpha\.so)$"
# Objects say whether their branches and returns are guarded. A linked file has the note only if the C library's
# start files have it, which Debian's lack.
NOTES = {"-fcf-protection": "IBT, SHSTK", "-mbranch-protection=standard": "BTI, PAC"}


def check_linked(folders, least):
    paths = [path for folder in folders for path in elf_files(folder)]
    expect(len(paths) >= least, ", ".join(folders), f"at least {least} programs and libraries", f"{len(paths)}")
    for path, text in read("-hld", *paths).items():
        for run_path in re.findall(r"\((?:RUNPATH|RPATH)\).*\[(.*)\]", text):
            for element in run_path.split(":"):
                expect(re.match(r"/|\$ORIGIN(/|$)", element), path, "elements that start with / or $ORIGIN", f"[{run_path}]")
        expect(re.search(r"GNU_STACK.* RW +0x", text), path, "a stack that is not executable")
        for pattern, wanted in PROTECTED if "linked" in has else []:
            expect(re.search(pattern, text), path, wanted)
    large = [path for path in paths if re.search(LARGE, path)]
    for path, text in read("--dyn-syms", *large).items():
        for flag, pattern, wanted in IMPORTS:
            expect(flag not in has or re.search(pattern, text), path, wanted)
    for path in paths:
        if "probed" in has and re.search(PROBED, path):
            with open(path, "rb") as file:
                expect(PROBE.search(file.read()), path, "probes of large stack frames")


def check_objects():
    with open(os.path.join(build, "compile_commands.json")) as file:
        commands = [entry["command"] for entry in json.load(file) if entry["file"].startswith(source + "/")]
    objects = [os.path.join(build, re.search(r" -o (\S+)", command)[1]) for command in commands]
    objects = [path for path in objects if os.path.exists(path)]
    for wanted in (NOTES[flag] for flag in has & NOTES.keys()):
        expect(len(objects) >= 50, build, "at least 50 objects", f"{len(objects)}")
        for path, text in read("-n", *objects).items():
            expect(wanted in text, path, f"the note {wanted}")


check_linked([folder for name in ("bin", "recording_gl") if os.path.isdir(folder := os.path.join(build, name))], 4)
check_objects()
with tempfile.TemporaryDirectory() as prefix:
    subprocess.run([cmake, "--install", build, "--prefix", prefix], check=True, stdout=subprocess.DEVNULL)
    check_linked([prefix], 2)
for kind in sorted({"linked", "probed", *NOTES, *(flag for flag, _, _ in IMPORTS)} - has):
    print(f"not asked for in this build: {kind}")
print(*failures, sep="\n")
sys.exit(bool(failures))
