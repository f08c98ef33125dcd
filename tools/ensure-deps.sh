#!/usr/bin/env bash
# Installs the Debian packages the build and the tests need, only when one is missing.
set -euo pipefail
# Fonts: metric-compatible free faces for the common office fonts, so that pages lay out as
# the author saw them; poppler-utils and qpdf check the PDFs we write, zbar-tools reads back the
# barcodes we draw, python3-pil and libtiff-tools the page pictures; LibreOffice (large) is the
# reference our page counts are compared with and the
# benchmark measures against.
pkgs=(python3-dev python3-pytest python3-hypothesis python3-docx python3-msoffcrypto-tool pandoc cmake g++ make rsync libgtest-dev
      python3-mypy python3-venv zip libreoffice-writer-nogui python3-openpyxl python3-docxtpl
      fonts-liberation2 fonts-crosextra-carlito fonts-crosextra-caladea fonts-dejavu-core poppler-utils qpdf
      python3-distributed zbar-tools python3-pil libtiff-tools)
missing=()
for p in "${pkgs[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "installing: ${missing[*]}"
  export DEBIAN_FRONTEND=noninteractive
  # another installer may hold the lock for a while: wait for it rather than fail
  apt-get -o DPkg::Lock::Timeout=600 update -qq
  apt-get -o DPkg::Lock::Timeout=600 install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi
command -v dotnet >/dev/null || { echo "the .NET SDK (dotnet) is required" >&2; exit 1; }

# The CommonMark standard's examples, for the Markdown reader's conformance table (npm's
# package of them; fetched once with npm's own client).
spec_dir=build/deps/commonmark-spec
if [ ! -f "$spec_dir/spec.txt" ]; then
  command -v npm >/dev/null || { echo "npm is needed once to fetch the CommonMark examples" >&2; exit 1; }
  mkdir -p "$spec_dir"
  tarball=$(cd "$spec_dir" && npm pack commonmark-spec@0.31.2 --silent)
  tar -xzf "$spec_dir/$tarball" -C "$spec_dir" --strip-components=1 package/spec.txt
  rm -f "$spec_dir/$tarball"
fi
