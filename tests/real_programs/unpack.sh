#!/bin/sh
# unpack.sh DIRECTORY LIST: unpacks the AArch64 packages that the file LIST names, one in a line, and all that they depend
# on, into DIRECTORY. Nothing is installed and the system's package lists stay as they are: apt-get gets places of its own,
# next to DIRECTORY, in which no package is installed. Does nothing if DIRECTORY has what LIST asks for.
set -eu

directory=$1 list=$2
apt=$directory.apt

die() {
    echo "$0: $*" >&2
    exit 1
}

packages=$(sed 's/#.*//' "$list" | xargs)
if [ -f "$apt/unpacked" ] && [ "$(cat "$apt/unpacked")" = "$packages" ]; then
    exit 0
fi
command -v apt-get >/dev/null || die "there is no apt-get to download AArch64 packages with"

rm -rf "$directory" "$apt"
mkdir -p "$directory" "$apt/lists/partial" "$apt/cache/archives/partial"
touch "$apt/status"
apt=$(cd "$apt" && pwd)
cat >"$apt/apt.conf" <<END
APT::Architecture "arm64";
APT::Architectures { "arm64"; };
APT::Sandbox::User "root";
APT::Get::List-Cleanup "false";
Acquire::Languages "none";
Acquire::IndexTargets::deb::Contents-deb::DefaultEnabled "false";
Dir::State::Lists "$apt/lists";
Dir::State::status "$apt/status";
Dir::State::extended_states "$apt/extended_states";
Dir::Cache "$apt/cache";
END
# Ubuntu keeps its AArch64 packages in a place of their own.
if [ "$(. /etc/os-release && echo "$ID")" = ubuntu ] && [ "$(dpkg --print-architecture)" != arm64 ]; then
    suite=$(. /etc/os-release && echo "$VERSION_CODENAME")
    keys=/usr/share/keyrings/ubuntu-archive-keyring.gpg
    for part in "$suite" "$suite-updates" "$suite-security"; do
        echo "deb [signed-by=$keys] http://ports.ubuntu.com/ubuntu-ports $part main universe"
    done >"$apt/sources.list"
    mkdir "$apt/no-parts"
    echo "Dir::Etc::sourcelist \"$apt/sources.list\"; Dir::Etc::sourceparts \"$apt/no-parts\";" >>"$apt/apt.conf"
fi

export APT_CONFIG="$apt/apt.conf"
# A list that can't be had matters only if a package is then missing.
apt-get update -q >"$apt/log" 2>&1 || true
# shellcheck disable=SC2086 # a list of words
apt-get install -q -y --no-install-recommends --download-only $packages >>"$apt/log" 2>&1 ||
    die "AArch64 packages can't be downloaded: $(grep '^E:' "$apt/log" | tail -1) (all of it: $apt/log)"

# As in an installed system, and tar is told to leave these links alone.
mkdir -p "$directory/usr/bin" "$directory/usr/sbin" "$directory/usr/lib"
for name in bin sbin lib; do
    ln -s "usr/$name" "$directory/$name"
done
for file in "$apt"/cache/archives/*.deb; do
    dpkg-deb --fsys-tarfile "$file" | tar -x --keep-directory-symlink --no-same-owner -C "$directory"
    rm "$file"
done
echo "$packages" >"$apt/unpacked"
