# SPDX-License-Identifier: MIT
"""conan create packaging/conan: builds the source tree that this file lies in."""
import os

from conan import ConanFile
from conan.tools.build import check_min_cppstd
from conan.tools.cmake import CMake, CMakeToolchain, cmake_layout
from conan.tools.files import copy


class KySystemRecipe(ConanFile):
    name = "kysystem"
    version = "3.0.0"
    description = "System services for desktop applications"
    license = "MIT"
    topics = ("log", "settings", "csv", "threads", "files", "processes")
    package_type = "library"
    settings = "os", "arch", "compiler", "build_type"
    options = {"shared": [True, False], "fPIC": [True, False]}
    default_options = {"shared": True, "fPIC": True}

    def export_sources(self):
        tree = os.path.join(self.recipe_folder, "..", "..")
        for part in ("CMakeLists.txt", "LICENSE", "cmake/*", "debug/*", "include/*", "src/*"):
            copy(self, part, tree, self.export_sources_folder)

    def config_options(self):
        if self.settings.os == "Windows":
            del self.options.fPIC

    def configure(self):
        if self.options.shared:
            self.options.rm_safe("fPIC")

    def layout(self):
        cmake_layout(self)

    def requirements(self):
        self.requires("utfcpp/[>=3 <5]", headers=True, libs=False, visible=False)

    def validate(self):
        check_min_cppstd(self, 20)

    def generate(self):
        toolchain = CMakeToolchain(self)
        for part in ("TESTS", "EXAMPLES", "TOOLS"):
            toolchain.cache_variables[f"KYSYSTEM_BUILD_{part}"] = False
        toolchain.cache_variables["UTFCPP_INCLUDE_DIR"] = os.path.join(
            self.dependencies["utfcpp"].cpp_info.includedirs[0], "utf8cpp").replace("\\", "/")
        toolchain.generate()

    def build(self):
        cmake = CMake(self)
        cmake.configure()
        cmake.build()

    def package(self):
        copy(self, "LICENSE", self.source_folder, os.path.join(self.package_folder, "licenses"))
        CMake(self).install()

    def package_info(self):
        # The package brings its own configuration files.
        self.cpp_info.set_property("cmake_find_mode", "none")
        self.cpp_info.builddirs.append(os.path.join("lib", "cmake", "kySystem"))
        self.cpp_info.libs = ["kySystem"]
        if not self.options.shared:
            self.cpp_info.defines = ["KY_STATIC"]
            if self.settings.os == "Windows":
                self.cpp_info.system_libs = ["advapi32", "ole32", "oleaut32", "rpcrt4", "shell32", "shlwapi", "version", "wbemuuid"]
            else:
                self.cpp_info.system_libs = ["pthread"]
