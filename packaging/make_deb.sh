#!/usr/bin/env bash
# Usage: packaging/make_deb.sh BUILD_FOLDER VERSION
#
# Makes two Debian packages of what a build installs: BUILD_FOLDER/sealwright-client_VERSION_ARCHITECTURE.deb
# is what customers are handed, sealwright_... is the rest and depends on it. The same commit gives the
# same packages, wherever it is built: all times are those of the newest entry of the changelog, unless
# SOURCE_DATE_EPOCH says otherwise.
set -euo pipefail
umask 022
packaging=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
build=$(cd "$1" && pwd)
version=$2
changelog() { dpkg-parsechangelog -l "$packaging/changelog" -S "$1"; }
if [[ $(changelog Version) != "$version" ]]; then
  echo "error: packaging/changelog is of version $(changelog Version), the project of $version" >&2
  exit 1
fi
SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(changelog Timestamp)}
export SOURCE_DATE_EPOCH

architecture=$(dpkg --print-architecture)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# install_component COMPONENT PACKAGE: what the component installs, as the package has it.
install_component() {
  local tree=$work/$2 documents=$work/$2/usr/share/doc/$2
  DESTDIR=$tree cmake --install "$build" --prefix /usr --component "$1" >/dev/null
  mv "$tree/usr/share/doc/Sealwright" "$documents"
  install -m 644 "$packaging/copyright" "$documents/copyright"
  ln -sf copyright "$documents/LICENSE"
  gzip -9n <"$packaging/changelog" >"$documents/changelog.gz"
  gzip -9n "$tree"/usr/share/man/man1/*.1
  strip --strip-unneeded --remove-section=.comment --remove-section=.note "$tree"/usr/bin/*
}

# make_package PACKAGE: its control file, but for the fields that are the same in both, is standard input.
make_package() {
  local tree=$work/$1 depends
  mkdir -p "$tree/DEBIAN" "$work/debian"
  printf 'Source: sealwright\n\nPackage: %s\nArchitecture: any\n' "$1" >"$work/debian/control"
  depends=$(cd "$work" && dpkg-shlibdeps -O "$tree"/usr/bin/* | sed -n 's/^shlibs:Depends=//p')
  (cd "$tree" && find usr -type f -print0 | sort -z | xargs -0 md5sum >DEBIAN/md5sums)
  {
    cat <<CONTROL
Package: $1
Version: $version
Architecture: $architecture
Maintainer: $(changelog Maintainer)
Installed-Size: $(find "$tree/usr" -type f -printf '%s\n' | awk '{kib += int(($1 + 1023) / 1024)} END {print kib}')
Section: utils
Priority: optional
CONTROL
    sed "s/^Depends: */&$depends/"
  } >"$tree/DEBIAN/control"
  local package=$build/${1}_${version}_$architecture.deb
  dpkg-deb --root-owner-group -Zxz --build "$tree" "$package" >/dev/null
  echo "Made $package"
}

install_component client sealwright-client
make_package sealwright-client <<'CONTROL'
Depends:
Suggests: openssl, jq, opensc, parallel, bash-completion
Description: keys and sealed images for two-stage secure boot - for customers
 For those who sign their own second-stage boot loader: a tool that makes a
 stage-2 key pair and signs and checks images with it (Sealwright_V21_client),
 one that makes keys and images with proof, with keys in files or elsewhere
 (Sealwright_seal), and a reader that says what files are, which belong together
 and whether a fused device would boot an image (Sealwright_inspect).
CONTROL

install_component signing sealwright
# The README stands in one folder with all documents that it names.
for document in "$work"/sealwright-client/usr/share/doc/sealwright-client/docs/*; do
  ln -s "../../sealwright-client/docs/${document##*/}" "$work/sealwright/usr/share/doc/sealwright/docs/"
done
make_package sealwright <<CONTROL
Depends: , sealwright-client (= $version)
Suggests: cmake, make, perl
Description: keys and sealed images for two-stage secure boot
 Sealwright makes the keys for a two-stage secure boot, seals first-stage and
 second-stage boot-loader images with them, and tells whether a sealed image
 will be accepted before it is shipped or a fuse is burnt.
 .
 The package holds the tool for the signing party with the frozen command line
 (Sealwright_V21) and the documents for those who run it; all other programs
 come with sealwright-client.
CONTROL
