"""What the tests of the installed files have in common: a server, and programs built against a tree."""
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(ROOT / "tests/support"))

from peers import Peer  # noqa: E402

BUILD, CMAKE, CPACK, CC, CXX, LIBDIR, VERSION = (
    os.environ[name] for name in ("BUILD", "CMAKE", "CPACK", "CC", "CXX", "LIBDIR", "VERSION"))
SHARED, TOOLS = (os.environ[name] == "1" for name in ("SHARED", "TOOLS"))
EXAMPLES = ROOT / "examples"
STRICT_C = ["-std=c11", "-Wall", "-Wextra", "-Werror", "-pedantic"]


def run(*command, **environment):
    """The standard output of a command that must succeed; on failure what it said."""
    outcome = subprocess.run([str(word) for word in command], env={**os.environ, **environment}, timeout=240,
                             stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                             check=False, text=True)
    if outcome.returncode:
        raise AssertionError("%s: exit status %d\n%s" % (" ".join(map(str, command)), outcome.returncode, outcome.stdout))
    return outcome.stdout


def files_below(folder):
    return {path.relative_to(folder).as_posix() for path in folder.rglob("*") if path.is_symlink() or path.is_file()}


class InstalledTreeCase(unittest.TestCase):
    """Has a scratch folder and a server. A subclass sets `prefix`, the tree that programs are built against."""
    prefix: pathlib.Path

    @classmethod
    def setUpClass(cls):
        cls.scratch = pathlib.Path(tempfile.mkdtemp())
        cls.addClassCleanup(shutil.rmtree, cls.scratch)
        cls.peer = Peer()
        cls.addClassCleanup(cls.peer.stop)

    def assert_works(self, name, program, **environment):
        """Whether an example does what its name says."""
        arguments, output = {"call": ([], "5\n"), "call_in_c": (["é & <b>"], "é & <b>\n"),
                             "call_with_ctypes": ([], "5\n"), "vxcall": (["add", "40", "2"], "42\n")}[name]
        self.assertEqual(run(*program, self.peer.url(), *arguments, **environment), output)

    def pkg_config(self, *options):
        return run("pkg-config", *options, PKG_CONFIG_PATH=str(self.prefix / LIBDIR / "pkgconfig")).split()

    def check_cmake_package(self):
        folder = self.scratch / "consumer"
        run(CMAKE, "-G", "Ninja", "-S", ROOT / "tests/packaging/consumer", "-B", folder, "-DCMAKE_PREFIX_PATH=%s" % self.prefix,
            "-DCMAKE_C_COMPILER=%s" % CC, "-DCMAKE_CXX_COMPILER=%s" % CXX, "-DEXAMPLES=%s" % EXAMPLES)
        run(CMAKE, "--build", folder)
        for name in ("call", "call_in_c"):
            self.assert_works(name, [folder / name])

    def check_pkg_config_modules(self):
        """The flags are the modules' alone."""
        self.assertEqual(self.pkg_config("--modversion", "orvane", "orvane-bq"), [VERSION, VERSION])
        compilers = {"call_in_c": [CC, *STRICT_C, EXAMPLES / "call_in_c.c"],
                     "call": [CXX, "-std=c++17", EXAMPLES / "call.cpp"]}
        for name, command in compilers.items():
            program = self.scratch / ("pkg_config_" + name)
            run(*command, "-o", program, *self.pkg_config("--cflags", "--libs", "orvane"))
            self.assert_works(name, [program], **self.library_path())

    def library_path(self):
        return {"LD_LIBRARY_PATH": str(self.prefix / LIBDIR)}
