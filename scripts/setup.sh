# shellcheck shell=bash
# Sourced by the other scripts. Finds out what this machine lacks and installs it.
#
#   need PROBE PACKAGE  notes PACKAGE as missing when the command PROBE fails
#   need_build_tools    C++20 compiler, cmake, ninja
#   need_test_tools     those, GoogleTest, OpenSSL, the sanitizers' libraries and software tokens
#   need_style_tools    clang-format, clang-tidy, shellcheck
#   need_arm_tools      compilers for 64-bit Arm and 32 bits, and an emulator
#   need_package_tools  what makes, checks and installs Debian packages
#   install_fuzz_tools  installs clang with its fuzzer
#   install_missing     installs what was noted and checks that it is there now
#   build_alone         runs a command that builds while no other does
#   say, fail           messages

readonly cmake_at_least=3.25

say() { printf '==> %s\n' "$*"; }

fail() {
  printf 'error: %s\n' "$*" >&2
  exit 1
}

# Runs apt-get as root. What it prints is shown only when it fails.
apt() {
  local output command=(env DEBIAN_FRONTEND=noninteractive apt-get -q "$@")
  if ((EUID != 0)); then
    has_command sudo || fail "this needs root, and there is no sudo: ${command[*]}"
    say "sudo ${command[*]}"
    command=(sudo "${command[@]}")
    # Where nobody can answer, sudo must not ask.
    if [[ -n ${CI:-} || ! -t 0 ]]; then command=(sudo -n "${command[@]:1}"); fi
  fi
  if output=$("${command[@]}" </dev/null 2>&1); then return; fi
  printf '%s\n' "$output" >&2
  return 1
}

# What installing packages means, in words: "82.1 MB to download, 310 MB on disk".
size_of_installation() {
  # Its status says that nothing was installed.
  { LC_ALL=C apt-get -o Debug::NoLocking=1 install --assume-no --no-install-recommends "$@" || true; } 2>/dev/null |
    sed -n -e 's/^Need to get \(.*\/\)\?\(.*B\) of archives\.$/\2 to download/p' \
      -e 's/^After this operation, \(.*B\) of additional disk space will be used\.$/\1 on disk/p' |
    paste -s -d, | sed 's/,/, /'
}

# Compiles and links standard input; the arguments are options.
compiles() { "${CXX:-c++}" -std=c++20 -x c++ - -o /dev/null "$@" 2>/dev/null; }

# build_alone VARIANT COMMAND...: runs a command while no other script builds in build/VARIANT.
build_alone() { mkdir -p build && flock "build/$1.lock" "${@:2}"; }

has_command() { command -v "$1" >/dev/null; }

has_compiler() { printf '#include <bit>\n#include <span>\nint main() {}\n' | compiles; }

cmake_version() { cmake --version 2>/dev/null | sed -n 's/^cmake version \([0-9.]*\).*/\1/p'; }

has_cmake() {
  local version
  version=$(cmake_version)
  [[ -n $version ]] && printf '%s\n' "$cmake_at_least" "$version" | sort -C -V
}

has_gtest() { printf '#include <gmock/gmock.h>\nint main() {}\n' | compiles -pthread -lgmock -lgtest; }

has_openssl() {
  printf '#include <openssl/opensslv.h>\n#if OPENSSL_VERSION_MAJOR < 3\n#error\n#endif\nint main() {}\n' |
    compiles -lcrypto
}

has_sanitizers() { printf 'int main() {}\n' | compiles -fsanitize=address,undefined; }

has_pkcs11_engine() { openssl engine pkcs11 >/dev/null 2>&1; }

missing_probes=()
missing_packages=()

need() {
  # shellcheck disable=SC2086  # a probe is a command and its argument
  if ! $1; then
    missing_probes+=("$1")
    missing_packages+=("$2")
  fi
}

need_build_tools() {
  need has_compiler g++
  need has_cmake cmake
  need 'has_command ninja' ninja-build
}

need_test_tools() {
  need_build_tools
  need has_gtest libgmock-dev
  need has_openssl libssl-dev
  need 'has_command openssl' openssl
  need 'has_command jq' jq
  need 'has_command make' make
  need 'has_command parallel' parallel
  need has_sanitizers g++
  # Tokens that the documents sign with.
  need 'has_command softhsm2-util' softhsm2
  need 'has_command pkcs11-tool' opensc
  need has_pkcs11_engine libengine-pkcs11-openssl
}

need_style_tools() {
  need 'has_command clang-format' clang-format
  need 'has_command clang-tidy' clang-tidy
  need 'has_command shellcheck' shellcheck
}

has_arm_compiler() { CXX=aarch64-linux-gnu-g++ has_compiler; }
has_32_bit_compiler() { CXX=i686-linux-gnu-g++ has_compiler; }

need_arm_tools() {
  need has_arm_compiler g++-aarch64-linux-gnu
  need has_32_bit_compiler g++-i686-linux-gnu
  need 'has_command qemu-aarch64' qemu-user
}

need_package_tools() {
  need 'has_command dpkg-shlibdeps' dpkg-dev
  need 'has_command lintian' lintian
  need 'has_command man' man-db
  if ((EUID != 0)); then need 'has_command fakeroot' fakeroot; fi
}

has_fuzzer() {
  printf 'extern "C" int LLVMFuzzerTestOneInput(const char*, unsigned long) { return 0; }\n' |
    CXX=clang++ compiles -fsanitize=fuzzer,address,undefined
}

install_fuzz_tools() {
  need 'has_command clang++' clang
  install_missing
  need has_fuzzer "libclang-rt-$(clang++ -dumpversion | cut -d. -f1)-dev"
  install_missing
}

install_missing() {
  if ((${#missing_packages[@]} == 0)); then
    say "Everything needed is there"
    return
  fi
  local packages size
  mapfile -t packages < <(printf '%s\n' "${missing_packages[@]}" | sort -u)
  if ! has_command apt-get; then
    fail "missing here: ${packages[*]}. There is no apt-get: install what these Debian packages hold."
  fi
  # One package source of several may be out of reach; the installation tells whether it matters.
  apt update || say "apt-get update failed; going on with the lists there are"
  size=$(size_of_installation "${packages[@]}")
  say "Installing ${packages[*]}${size:+: $size}"
  apt install -y --no-install-recommends "${packages[@]}" || fail "could not install: ${packages[*]}"

  local probe
  for probe in "${missing_probes[@]}"; do
    # shellcheck disable=SC2086
    if $probe; then continue; fi
    if [[ $probe == has_cmake ]]; then
      fail "cmake $cmake_at_least or newer is needed and this system offers $(cmake_version);" \
        "Debian 12 and Ubuntu 24.04 have a new enough one"
    fi
    fail "installed, but this check still fails: $probe"
  done
  missing_probes=()
  missing_packages=()
}
