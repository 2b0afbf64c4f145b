#!/usr/bin/env bash
# The part of scripts/check-debian.sh that runs where file systems may be mounted without anybody else seeing them.
#
#   scripts/check-debian-inside.sh ROOT PACKAGES REPORT     REPORT gets the numbers of checks that passed and failed
set -euo pipefail
source scripts/common.sh
base=$1 packages=$2 report=$3

work=$base.work
mkdir -p "$work"
mount -t tmpfs -o size=8G none "$work"
mkdir "$work/upper" "$work/work" "$work/root"
root=$work/root
mount -t overlay -o "lowerdir=$base,upperdir=$work/upper,workdir=$work/work" none "$root"
mount -t proc none "$root/proc"
mount --rbind /dev "$root/dev"
cp /etc/resolv.conf "$root/etc/resolv.conf"
# It reaches its packages as this machine does.
apt-config dump Acquire >"$root/etc/apt/apt.conf.d/99host"
mkdir "$root/packages" && cp "$packages"/*.deb "$root/packages"

passed=0 failed=0
trap 'echo "$passed $failed" >"$report"' EXIT
inside() {
    chroot "$root" env -i HOME=/root LC_ALL=C.UTF-8 DEBIAN_FRONTEND=noninteractive \
        ${http_proxy:+http_proxy="$http_proxy"} \
        PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin bash -c "$1"
}
check_inside() { check "$1" inside "$2"; }
install_inside() { inside "apt-get -q -y -o DPkg::Use-Pty=0 install --no-install-recommends $*" >"$work/apt.log" 2>&1 || { tail -n 20 "$work/apt.log" && return 1; }; }

inside 'apt-get -q update' >"$work/apt.log" 2>&1 || cat "$work/apt.log"
check "tarno2 is installed" install_inside './packages/tarno2_*.deb'
inside 'useradd --create-home engineer && touch /stamp && sleep 1.1'

record='cat >first.cfg <<END
DriverName = "Simulator"
BaseNumber = 1
FileName = "$PWD/first.dat"
ChannelCount = 4
ChannelsNumber = 0, 1, 2, 3
Frequency = 200000
MeasureFileMode = 1
TimeNeed = 1
END
tarno2-console --status /c first.cfg && tarno2-verify --quiet first.dat && [ -s first.dat ]'
as_engineer() { inside "cd /home/engineer && su engineer -s /bin/bash -c '$(sed "s/'/'\\\\''/g" <<<"$1")'"; }
check "the simulated board is recorded by a user" as_engineer "export HOME=/home/engineer; $record"
check_inside "the user's log is the user's" 'grep -q "Program exit" /home/engineer/.config/tarno2/AutoLog.txt'
check_inside "the simulated board is recorded by root" "mkdir /srv/root && cd /srv/root && $record"
check_inside "root's log is root's" 'grep -q "Program exit" /root/.config/tarno2/AutoLog.txt'
check_inside "it is recorded by a service without a home" "mkdir /srv/service && cd /srv/service && rm -r /root/.config && unset HOME && $record && [ -f /root/.config/tarno2/AutoLog.txt ]"
check_inside "Tarno2 /c records without a display" "mkdir /srv/window && cd /srv/window && $(sed 's/tarno2-console/Tarno2/' <<<"$record")"
check_inside "nothing is written below /usr" '[ -z "$(find /usr /etc/tarno2 -newer /stamp)" ]'
check_inside "bash completes" '. /usr/share/bash-completion/completions/tarno2-export && COMP_WORDS=(tarno2-export --format w) COMP_CWORD=2 &&
    _tarno2 tarno2-export && [ "${COMPREPLY[*]}" = wav ]'
check_inside "a picture of a recording is drawn without a display" 'tarno2-thumbnail --size 128 /srv/root/first.txt /tmp/a.png && head -c 4 /tmp/a.png | grep -q PNG'
check_inside "the manual is there in both languages" '[ -f /usr/share/doc/tarno2/manual/en/index.html ] && [ -f /usr/share/doc/tarno2/manual/ru/index.html ]'
check_inside "the sample recording is right" 'tarno2-verify --quiet /usr/share/tarno2/sample/sample.dat'
check_inside "the group for real time is there" 'getent group tarno2 >/dev/null && grep -q "@tarno2.*rtprio" /etc/security/limits.d/tarno2.conf'

check "everything is installed" install_inside './packages/*.deb' man-db libglib2.0-bin shared-mime-info g++ cmake make
check_inside "all drivers load" '[ "$(tarno2-drivers list | grep -c "^    loads")" = 8 ] || { tarno2-drivers list; false; }'
check_inside "manual pages are found" 'for program in /usr/bin/[Tt]arno2*; do man -w "$(basename $program)" >/dev/null || exit 1; done'
check_inside "a recording is known by its description, its data by their name" '
    [ "$(gio info -a standard::content-type /srv/root/first.txt | grep -o application.*)" = application/x-tarno2-recording ] &&
    [ "$(gio info -a standard::content-type /srv/root/first.dat | grep -o application.*)" = application/x-tarno2-data ]'
check_inside "tarno2-dev builds the example, which loads" 'cp -r /usr/share/tarno2/sdk/example /tmp/example && cd /tmp/example &&
    { cmake -B build && cmake --build build; } >/tmp/example.log 2>&1 || { tail /tmp/example.log; exit 1; }
    tarno2-drivers add Example build/ExampleDriver.so | grep -q "^    loads"'
check_inside "python3-tarno2 reads the recording" 'cd / && python3 -m tarno2 info /srv/root/first.dat | grep -q Simulator'

check_inside "all of it is removed" 'apt-get -q -y purge "tarno2*" python3-tarno2 >/tmp/purge.log 2>&1 || { cat /tmp/purge.log; false; }'
left='find / -xdev \( -path /proc -o -path /dev -o -path /packages -o -path /srv -o -path /tmp -o -path /root -o -path /home -o -path /var/log \) -prune -o -iname "*tarno2*" -print'
check_inside "nothing is left of it" "[ -z \"\$($left)\" ] && ! getent group tarno2 || { $left; false; }"
check_inside "recordings, settings and logs of users are left" '[ -f /home/engineer/first.dat ] && [ -f /home/engineer/.config/tarno2/AutoLog.txt ]'
