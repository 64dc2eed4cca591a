#!/usr/bin/env bash
# Usage: packaging/make_bundle.sh BUILD_FOLDER VERSION
#
# Makes BUILD_FOLDER/sealwright-client-VERSION-MACHINE.tar.gz: what a customer is handed who has no
# Debian. It is unpacked anywhere and needs nothing beside it. The same build gives the same bytes.
set -euo pipefail
umask 022
packaging=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
build=$(cd "$1" && pwd)
version=$2
name=sealwright-client-$version-$(uname -m)
SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(sed -n '0,/^ -- /s/^ -- .*>  //p' "$packaging/changelog" | date -f - +%s)}

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cmake --install "$build" --component client --prefix "$work/$name" --strip >/dev/null
cat >"$work/$name/README" <<'END'
Sealwright for customers: make a stage-2 key pair, sign and check your second stage.

Here, in this folder:

  export PATH="$PWD/bin:$PATH"
  export MANPATH="$PWD/share/man:"
  Sealwright_seal --help
  man Sealwright_V21_client

Begin with share/doc/Sealwright/docs/customers.md. The licence is share/doc/Sealwright/LICENSE.
END
tar -C "$work" --sort=name --owner=0 --group=0 --numeric-owner --mtime="@$SOURCE_DATE_EPOCH" \
  -cf - "$name" | gzip -9n >"$build/$name.tar.gz"
echo "Made $build/$name.tar.gz"
