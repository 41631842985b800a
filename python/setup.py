"""Builds the extension with the project's CMake, which also builds the effects module and its platform
library; all three are put inside the package, where the extension looks for them."""
import os
import shutil
import subprocess
import sys

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

PROJECT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
SHIPPED_LIBRARIES = ("libAudioFilters.so", "libAudioFiltersPlatform.so")


class CMakeBuild(build_ext):
    def build_extension(self, extension):
        # AF_CMAKE_BUILD names a build folder configured already (the test command's): only the package is
        # brought up to date there. Otherwise a Release build of its own goes to build-python/.
        folder = os.environ.get("AF_CMAKE_BUILD")
        if not folder:
            folder = os.path.join(PROJECT, "build-python")
            configure = ["cmake", "-S", PROJECT, "-B", folder, "-DCMAKE_BUILD_TYPE=Release", "-DAF_BUILD_TESTS=OFF",
                         "-DAF_BUILD_BENCH=OFF", "-DAF_BUILD_PYTHON=ON", f"-DPYTHON_EXECUTABLE={sys.executable}"]
            subprocess.run(configure, check=True)
        jobs = os.environ.get("CMAKE_BUILD_PARALLEL_LEVEL", str(os.cpu_count() or 2))
        subprocess.run(["cmake", "--build", folder, "-j", jobs, "--target", "audiofilters_python"], check=True)
        built = os.path.join(folder, "python", "audiofilters")
        target = os.path.dirname(os.path.abspath(self.get_ext_fullpath(extension.name)))
        os.makedirs(target, exist_ok=True)
        shutil.copy2(os.path.join(built, os.path.basename(self.get_ext_filename(extension.name))),
                     self.get_ext_fullpath(extension.name))
        for library in SHIPPED_LIBRARIES:
            shutil.copy2(os.path.join(built, library), os.path.join(target, library))


setup(ext_modules=[Extension("audiofilters._audiofilters", sources=[])], cmdclass={"build_ext": CMakeBuild})
