"""The Debian packages: what they hold and need, and that programs build against them unpacked."""
import gzip

from installed_tree import BUILD, CPACK, LIBDIR, VERSION, InstalledTreeCase, files_below, run

MAJOR = VERSION.split(".", maxsplit=1)[0]
RUNTIME, DEVELOPMENT, TOOLS = "liborvane" + MAJOR, "liborvane-dev", "orvane-tools"
THIS = "%s (= %s-1)" % (RUNTIME, VERSION)


class DebianTest(InstalledTreeCase):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        run(CPACK, "--config", BUILD + "/CPackConfig.cmake", "-B", cls.scratch / "made")
        cls.packages = {path.name.split("_")[0]: path for path in (cls.scratch / "made").glob("*.deb")}
        cls.files = {}
        for name, path in cls.packages.items():
            run("dpkg-deb", "--extract", path, cls.scratch / name)
            run("dpkg-deb", "--extract", path, cls.scratch / "root")
            cls.files[name] = files_below(cls.scratch / name)
        cls.prefix = cls.scratch / "root/usr"

    def needs(self, package):
        return run("dpkg-deb", "--field", self.packages[package], "Depends").strip().split(", ")

    def test_files_are_in_the_package_that_they_belong_to(self):
        self.assertEqual(set(self.files), {RUNTIME, DEVELOPMENT, TOOLS})
        library = "usr/" + LIBDIR
        self.assertEqual({name for name in self.files[RUNTIME] if not name.startswith("usr/share/doc/")},
                         {"%s/lib%s.so.%s" % (library, name, version)
                          for name in ("bq", "vx") for version in (MAJOR, VERSION)})
        self.assertLessEqual({library + "/libvx.so", library + "/pkgconfig/orvane.pc", "usr/include/VX/VX.h"},
                             self.files[DEVELOPMENT])
        self.assertIn("usr/bin/vxcall", self.files[TOOLS])
        self.assertEqual(len(set().union(*self.files.values())), sum(map(len, self.files.values())), "a file is in two")

    def test_packages_need_each_other_and_their_libraries(self):
        self.assertLessEqual({"libc6", "libcurl4", "libexpat1", "libstdc++6"},
                             {need.split(" ")[0] for need in self.needs(RUNTIME)})
        self.assertEqual(self.needs(DEVELOPMENT), [THIS])
        self.assertIn(THIS, self.needs(TOOLS))

    def test_library_package_tells_dependents_and_the_loader_of_itself(self):
        control = self.scratch / "control"
        run("dpkg-deb", "--control", self.packages[RUNTIME], control)
        self.assertEqual(sorted((control / "shlibs").read_text().splitlines()),
                         ["lib%s %s %s (>= %s-1)" % (name, MAJOR, RUNTIME, VERSION) for name in ("bq", "vx")])
        self.assertIn("ldconfig", (control / "triggers").read_text())

    def test_documents_manual_pages_and_completions_are_where_debian_looks(self):
        for name, files in self.files.items():
            wanted = {"usr/share/doc/%s/%s" % (name, each) for each in ("copyright", "changelog.gz", "changelog.Debian.gz")}
            if name == TOOLS:
                wanted |= {"usr/share/" + place % tool for tool in ("vxcall", "vxserve")
                           for place in ("man/man1/%s.1.gz", "zsh/vendor-completions/_%s")}
            self.assertLessEqual(wanted, files)
        changelog = self.scratch / RUNTIME / "usr/share/doc" / RUNTIME / "changelog.Debian.gz"
        self.assertIn("orvane (%s-1)" % VERSION, gzip.decompress(changelog.read_bytes()).decode())

    def test_programs_build_against_the_unpacked_packages(self):
        self.check_cmake_package()
        self.check_pkg_config_modules()
        self.assert_works("vxcall", [self.prefix / "bin/vxcall"], **self.library_path())
