"""The installed tree: what is in it, and that programs build against it and run, wherever it is moved."""
import re
import sys
import unittest

from installed_tree import BUILD, CMAKE, EXAMPLES, LIBDIR, ROOT, SHARED, TOOLS, VERSION, InstalledTreeCase, files_below, run

MAJOR = VERSION.split(".", maxsplit=1)[0]
HEADERS = {"include/" + name for name in files_below(ROOT / "include")}
SHARED_FILES = {"%s/lib%s.so.%s" % (LIBDIR, name, version) for name in ("bq", "vx") for version in (MAJOR, VERSION)}
LINK_FILES = {"%s/lib%s.%s" % (LIBDIR, name, "so" if SHARED else "a") for name in ("bq", "vx")}


class InstallTest(InstalledTreeCase):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        run(CMAKE, "--install", BUILD, "--prefix", cls.scratch / "installed")
        # Nothing may depend on the place that it was installed to.
        cls.prefix = (cls.scratch / "installed").rename(cls.scratch / "moved")

    def install_component(self, component):
        folder = self.scratch / component
        run(CMAKE, "--install", BUILD, "--prefix", folder, "--component", component)
        return files_below(folder)

    def test_components_divide_the_tree(self):
        development = self.install_component("development")
        self.assertLessEqual(HEADERS | LINK_FILES, development)
        self.assertEqual({name for name in development if name.endswith(".h")}, HEADERS)
        self.assertLessEqual({"%s/pkgconfig/orvane.pc" % LIBDIR, "%s/pkgconfig/orvane-bq.pc" % LIBDIR,
                              "%s/cmake/Orvane/OrvaneConfig.cmake" % LIBDIR,
                              "%s/cmake/Orvane/OrvaneConfigVersion.cmake" % LIBDIR}, development)
        runtime = self.install_component("runtime")
        self.assertEqual(runtime, SHARED_FILES if SHARED else set())
        tools = self.install_component("tools")
        self.assertEqual("bin/vxcall" in tools, TOOLS)
        self.assertEqual(files_below(self.prefix), development | runtime | tools)
        self.assertFalse(development & runtime | development & tools)

    def test_links_of_documents_lead_to_installed_files(self):
        documents = {path: path.read_text() for path in self.prefix.rglob("*.md")}
        links = [(path, link) for path, text in documents.items()
                 for link in re.findall(r"\]\(([^)#:\s]+)(?:#[^)]*)?\)", text)]
        self.assertEqual([(path.name, link) for path, link in links if not (path.parent / link).exists()], [])
        places = {(path.parent / link).resolve().relative_to(self.prefix.resolve()).as_posix() for path, link in links}
        self.assertLessEqual({"include/VX", "share/doc/orvane/docs/guide.md", "share/doc/orvane/README.md"}, places)

    def test_destdir_comes_before_the_prefix_and_uninstalling_removes_what_was_installed_alone(self):
        folder = self.scratch / "staging/opt/orvane"
        run(CMAKE, "--install", BUILD, "--prefix", "/opt/orvane", DESTDIR=str(self.scratch / "staging"))
        self.assertEqual(files_below(folder), files_below(self.prefix))
        foreign = {"include/VX/Foreign.h", "lib/libforeign.so"}
        for name in foreign:
            (folder / name).parent.mkdir(exist_ok=True)
            (folder / name).write_text("")
        run(CMAKE, "--build", BUILD, "--target", "uninstall", DESTDIR=str(self.scratch / "staging"))
        self.assertEqual(files_below(folder), foreign)
        ours = {path.name for path in folder.rglob("*") if path.is_dir()} & {"BQ", "VX", "Orvane", "orvane", "docs", "examples"}
        self.assertEqual(ours, {"VX"})
        with self.assertRaisesRegex(AssertionError, r"nothing\s+was\s+installed"):
            run(CMAKE, "--build", BUILD, "--target", "uninstall")

    def test_no_file_for_other_tools_names_a_place(self):
        for path in [*self.prefix.rglob("*.pc"), *self.prefix.rglob("*.cmake")]:
            self.assertNotRegex(path.read_text(), "%s|%s|%s" % (ROOT, BUILD, self.scratch), path.name)

    def test_programs_build_with_the_cmake_package(self):
        self.check_cmake_package()

    def test_programs_build_with_pkg_config(self):
        self.check_pkg_config_modules()

    @unittest.skipUnless(SHARED, "no shared library")
    def test_sonames_carry_the_major_version_alone_and_python_loads_the_library(self):
        for name in ("bq", "vx"):
            dynamic = run("readelf", "--dynamic", "--wide", self.prefix / LIBDIR / ("lib%s.so" % name))
            self.assertEqual(re.findall(r"soname: \[(.*)\]", dynamic), ["lib%s.so.%s" % (name, MAJOR)])

        self.assert_works("call_with_ctypes", [sys.executable, EXAMPLES / "call_with_ctypes.py"], **self.library_path())

    @unittest.skipUnless(TOOLS, "no tools")
    def test_moved_tool_finds_its_libraries(self):
        self.assert_works("vxcall", [self.prefix / "bin/vxcall"])
