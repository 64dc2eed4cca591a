#!/usr/bin/env bash
# Usage: packaging/make_deb.sh BUILD_FOLDER VERSION
#
# Makes BUILD_FOLDER/sealwright_VERSION_ARCHITECTURE.deb of what a build installs. The same commit gives
# the same package, wherever it is built: all times are those of the newest entry of the changelog,
# unless SOURCE_DATE_EPOCH says otherwise.
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

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
tree=$work/tree
documents=$tree/usr/share/doc/sealwright
DESTDIR=$tree cmake --install "$build" --prefix /usr >/dev/null
mv "$tree/usr/share/doc/Sealwright" "$documents"
# What a package has in other places or has no use for.
rm "$documents/LICENSE" "$documents/CONTRIBUTING.md"
install -m 644 "$packaging/copyright" "$documents/copyright"
gzip -9n <"$packaging/changelog" >"$documents/changelog.gz"
gzip -9n "$tree"/usr/share/man/man1/*.1
strip --strip-unneeded --remove-section=.comment --remove-section=.note "$tree"/usr/bin/*

mkdir -p "$tree/DEBIAN" "$work/debian"
printf 'Source: sealwright\n\nPackage: sealwright\nArchitecture: any\n' >"$work/debian/control"
depends=$(cd "$work" && dpkg-shlibdeps -O "$tree"/usr/bin/* | sed -n 's/^shlibs:Depends=//p')
(cd "$tree" && find usr -type f -print0 | sort -z | xargs -0 md5sum >DEBIAN/md5sums)
cat >"$tree/DEBIAN/control" <<CONTROL
Package: sealwright
Version: $version
Architecture: $(dpkg --print-architecture)
Maintainer: $(changelog Maintainer)
Installed-Size: $(find "$tree/usr" -type f -printf '%s\n' | awk '{kib += int(($1 + 1023) / 1024)} END {print kib}')
Depends: $depends
Section: utils
Priority: optional
Description: keys and sealed images for two-stage secure boot
 Sealwright makes the keys for a two-stage secure boot, seals first-stage and
 second-stage boot-loader images with them, and tells whether a sealed image
 will be accepted before it is shipped or a fuse is burnt.
 .
 The package holds the tool for the signing party (Sealwright_V21), the one for
 customers who sign their own second stage (Sealwright_V21_client), and a reader
 that says what a file is and whether a fused device would boot an image
 (Sealwright_inspect).
CONTROL
package=$build/sealwright_${version}_$(dpkg --print-architecture).deb
dpkg-deb --root-owner-group -Zxz --build "$tree" "$package" >/dev/null
echo "Made $package"
