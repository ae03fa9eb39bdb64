# Builds for 64-bit ARM on a Debian system of another kind, which has the libraries of both side by side. What is made on the
# way, the generator of manual pages say, and the tests run under the emulator: the system finds their libraries by itself.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)
set(PKG_CONFIG_EXECUTABLE /usr/bin/aarch64-linux-gnu-pkg-config)
set(CMAKE_CROSSCOMPILING_EMULATOR /usr/bin/qemu-aarch64)
