#!/usr/bin/env bash
# End-to-end tests: the built module loaded into the module shell, in a
# process of its own, against a temporary content folder.
# Usage: shell_e2e.sh SHELL MODULE CASE
#
# When run as root (as CI does), the shell runs as the unprivileged user
# "nobody" (setpriv), like the real host never runs with root's powers over
# the content folder; the shell and the module are copied into the temporary
# folder, which that user can read, so the build folder's permissions do not
# matter.
set -euo pipefail
shell_bin=$1 module_bin=$2 case=$3

work=$(mktemp -d "${TMPDIR:-/tmp}/tidewell-e2e-XXXXXX")
trap 'chmod -R u+rwX "$work" 2>/dev/null; rm -rf "$work"' EXIT
chmod 755 "$work"
mkdir -p "$work/bin" "$work/content/sub" "$work/content/cfg" "$work/tmp"
chmod 1777 "$work/tmp"
cp "$shell_bin" "$work/bin/tidewell_shell"
cp "$module_bin" "$work/bin/libtidewell.so"
chmod 755 "$work/bin/tidewell_shell" "$work/bin/libtidewell.so"
export TMPDIR=$work/tmp

# The start-up job probes the management processor, which on a machine
# without an IPMI device runs "modprobe" and "mknod": stand-ins on the search
# path answer instead (and record their calls), so the machine is not touched.
mkdir -p "$work/stubs"
for command in modprobe mknod; do
  printf '#!/bin/sh\necho "%s $*" >>"%s"\nexit 1\n' "$command" "$work/tmp/driver-commands" >"$work/stubs/$command"
  chmod 755 "$work/stubs/$command"
done
export PATH=$work/stubs:$PATH

run_as=()
if [[ $(id -u) -eq 0 ]]; then
  run_as=(setpriv --reuid=nobody --regid=nogroup --clear-groups)
fi

content=$work/content
printf '<div>header</div>' >"$content/header.htm"
printf '<html><?include header.htm?><p>body</p></html>\n' >"$content/page.htm"
printf 'S<?include ../header.htm?>|<?include /header.htm?>' >"$content/sub/nested.htm"
printf 'a<?include self.htm?>b' >"$content/self.htm"
printf '<x/>' >"$content/cfg/allboards.xml"
chmod -R a+rX "$content"

# shell ARGS...: runs the shell (as nobody when root) from the work folder.
shell() {
  (cd "$work" && "${run_as[@]}" "$work/bin/tidewell_shell" --module "$work/bin/libtidewell.so" "$@")
}

fail() { echo "FAIL: $*"; exit 1; }

# bare_shell ARGS...: like `shell`, holding descriptors 0, 1 and 2 only,
# whatever this script inherited.
bare_shell() {
  (cd "$work" && python3 -c 'import os, sys; os.closerange(3, 65536); os.execvp(sys.argv[1], sys.argv[1:])' \
    "${run_as[@]}" "$work/bin/tidewell_shell" --module "$work/bin/libtidewell.so" "$@")
}

# frame METHOD URL: one request in the serve framing.
frame() { printf '%s %d\n%s' "$1" "${#2}" "$2"; }

# urlencode TEXT: TEXT with every byte but letters and digits as %XX.
urlencode() { python3 -c 'import sys, urllib.parse; print(urllib.parse.quote(sys.argv[1], safe=""))' "$1"; }

# expect_get URL STATUS EXPECTED-FILE: the page byte for byte, and the status.
expect_get() {
  local url=$1 status=$2 expected=$3 got=0
  shell "$content" get "$url" >"$work/out" 2>"$work/err" || got=$?
  [[ $got -eq $status ]] || { cat "$work/err"; fail "get '$url': status $got, expected $status"; }
  cmp "$work/out" "$expected" || { od -c "$work/out" | head; fail "get '$url': page differs"; }
}

header='<html><head><title>Tidewell</title><style>A:link        {color: #0000FF} A:visited     {color: #0000FF} A:hover       {color: #0000FF} A:active      {color: #0000FF} </style></head><body><table width=100% height=100% cellspacing=0 cellpadding=0><tr><td align=left valign=top height=100%>'
footer='</td></tr></table></body></html>'

case "$case" in
  start_page)
    target=/langsel.htm
    if [[ -f /mnt/automation/rotate.txt || -d /mnt/automation/rotate.txt ]]; then target=/rotate.htm; fi
    for m in /tmp/install.xml /mnt/bootdevice/install.xml /mnt/automation/install.xml; do
      if [[ -e $m ]]; then target=/automate.htm; fi
    done
    printf '%s' "$header<script type=\"text/JavaScript\">window.location = '$target';</script>$footer" >"$work/expected"
    expect_get "" 0 "$work/expected"
    expect_get "zrmedia://Tidewell/index.nsp?x=1#top" 0 "$work/expected"
    expect_get "INDEX.NSP" 0 "$work/expected" ;;

  static_include)
    printf '<html><div>header</div><p>body</p></html>\n' >"$work/expected"
    expect_get "zrmedia://Tidewell/page.htm" 0 "$work/expected"
    expect_get "page.htm?x=1#frag" 0 "$work/expected"
    printf 'S<div>header</div>|<div>header</div>' >"$work/expected"
    expect_get "sub/nested.htm" 0 "$work/expected"
    printf '<x/>' >"$work/expected"
    expect_get "cfg/allboards.xml" 0 "$work/expected" ;;

  not_found)
    : >"$work/expected"
    expect_get "missing.htm" 1 "$work/expected"
    expect_get "sub" 1 "$work/expected"
    expect_get "%" 1 "$work/expected"
    expect_get "%G%" 1 "$work/expected" ;;

  system_query)
    printf '{"ErrorCode":0,"Platform":"Linux"}' >"$work/expected"
    expect_get "system.nsp?Command=Query" 0 "$work/expected"
    printf '{"ErrorCode":1}' >"$work/expected"
    printf 'not a page' >"$content/wd100.nsp"
    expect_get "wd100.nsp" 0 "$work/expected" ;;

  self_include)
    shell "$content" get self.htm >"$work/out"
    { printf 'a%.0s' $(seq 1001); printf '<?include self.htm?>'; printf 'b%.0s' $(seq 1001); } >"$work/expected"
    cmp "$work/out" "$work/expected" || fail "self-including page" ;;

  big_page)
    head -c $((1 << 20)) /dev/urandom | base64 -w 100 >"$content/big.txt"
    chmod a+r "$content/big.txt"
    expect_get "big.txt" 0 "$content/big.txt" ;;

  debug_log)
    host=$work/host
    mkdir "$host"
    chmod 777 "$host"
    printf 'from an earlier run\n' >"$host/iexplore_html.log"
    chmod 666 "$host/iexplore_html.log"
    shell --host-dir "$host" "$content" get "debug.nsp?Command=Log&Message=100%25+done+%25s" >"$work/out" 2>"$work/err"
    [[ ! -s "$work/out" ]] || fail "debug.nsp answered a page"
    grep -Eq $'^\\[[0-9]{2}:[0-9]{2}:[0-9]{2}\\] 100% done %s\r$' "$host/iexplore_html.log" || { od -c "$host/iexplore_html.log"; fail "log line"; }
    [[ $(wc -l <"$host/iexplore_html.log") -eq 1 ]] || fail "the log was not truncated"
    # The start-up job's ROM layer may say on standard error that it cannot
    # open /dev/mem (an unprivileged run): that line is not the page's.
    grep -v '^opening /dev/mem: ' "$work/err" | cmp - "$host/iexplore_html.log" || fail "the console line is not on standard error"
    [[ -f "$host/TIDEWELL.XML" ]] || fail "no configuration file in the host folder" ;;

  serve)
    printf 'HTML' >"$content/a b.htm"
    chmod a+r "$content/a b.htm"
    long=$(head -c 300000 /dev/zero | tr '\0' 'x')
    {
      printf 'GET 8\npage.htm'
      printf 'GET 11\nmissing.htm'
      printf 'POST 24\nsystem.nsp?Command=Query'
      printf 'GET 7\na+b.htm'
      printf 'GET 0\n'
      printf 'GET %d\n%s' $((${#long} + 4)) "$long.htm"
    } >"$work/requests"
    {
      printf '0 42\n<html><div>header</div><p>body</p></html>\n'
      printf '1 0\n'
      printf '0 0\n' # a POST carries no parameters: no command, an empty answer
      printf '0 4\nHTML'
      start="$header<script type=\"text/JavaScript\">window.location = '/langsel.htm';</script>$footer"
      printf '0 %d\n%s' ${#start} "$start"
      printf '1 0\n'
    } >"$work/expected"
    if [[ -e /tmp/install.xml || -e /mnt/bootdevice/install.xml || -e /mnt/automation/install.xml || -e /mnt/automation/rotate.txt ]]; then
      echo "skipped: marker files present on this machine"; exit 77
    fi
    shell "$content" serve <"$work/requests" >"$work/out"
    cmp "$work/out" "$work/expected" || { od -c "$work/out" | head -20; fail "serve responses differ"; } ;;

  serve_protocol_error)
    got=0
    printf 'GET 8\npage.htmGET x\n' | shell "$content" serve >"$work/out" 2>"$work/err" || got=$?
    [[ $got -eq 2 ]] || fail "malformed header: status $got"
    head -c 5 "$work/out" | cmp - <(printf '0 42\n') || fail "the first request was not answered"
    got=0
    printf 'GET 100\nshort' | shell "$content" serve >/dev/null 2>&1 || got=$?
    [[ $got -eq 2 ]] || fail "short URL: status $got" ;;

  serve_run_reads_no_requests)
    # A program run through system.nsp that reads standard input sees an
    # empty input, not the request stream: the next request is still served.
    run='system.nsp?Command=Run&Executable=cat'
    { printf 'GET %d\n%s' ${#run} "$run"; printf 'GET 8\npage.htm'; } | shell "$content" serve >"$work/out" 2>"$work/err"
    {
      printf '0 71\n{"ErrorCode":0,"ReturnCode":"0","StandardOutput":"","StandardError":""}'
      printf '0 42\n<html><div>header</div><p>body</p></html>\n'
    } >"$work/expected"
    cmp "$work/out" "$work/expected" || { od -c "$work/out" | head; fail "serve with a program reading standard input"; } ;;

  serve_programs_inherit_standard_descriptors_only)
    # A program run through system.nsp has standard input, output and error
    # and nothing else: it can neither read the request stream nor forge an
    # answer on the shell's answer channel.
    list=$(urlencode "-c 'ls /proc/\$\$/fd; :'")
    forge=$(urlencode "-c 'for fd in 3 4 5 6 7 8 9; do printf \"0 6\\nFORGED\" >&\$fd; done 2>/dev/null; :'")
    {
      frame GET "system.nsp?Command=Run&Executable=/bin/sh&Arguments=$list"
      frame GET "system.nsp?Command=Run&Executable=/bin/sh&Arguments=$forge"
      for _ in 1 2 3; do frame GET page.htm; done
    } | bare_shell "$content" serve >"$work/out" 2>"$work/err"
    {
      printf '0 80\n{"ErrorCode":0,"ReturnCode":"0","StandardOutput":"0\\n1\\n2\\n","StandardError":""}'
      printf '0 71\n{"ErrorCode":0,"ReturnCode":"0","StandardOutput":"","StandardError":""}'
      for _ in 1 2 3; do printf '0 42\n<html><div>header</div><p>body</p></html>\n'; done
    } >"$work/expected"
    cmp "$work/out" "$work/expected" || { cat "$work/out"; echo; fail "programs see the shell's channels"; } ;;

  special_files_are_not_found)
    # FIFOs and devices, named as a page, by an include, or by an absolute
    # path, answer at once as not found (or as nothing included), and the
    # shell's memory does not grow: only regular files are read.
    mkfifo "$content/fifo.htm" "$work/tmp/fifo"
    ln -s /dev/urandom "$content/random.htm"
    printf 'A<?include fifo.htm?>B<?include random.htm?>C<?include ../../../../../../../../../dev/zero?>D' >"$content/includes.htm"
    chmod a+rw "$content/fifo.htm" "$work/tmp/fifo"
    chmod a+r "$content/includes.htm"
    coproc SERVE { cd "$work" && exec "${run_as[@]}" "$work/bin/tidewell_shell" --module "$work/bin/libtidewell.so" "$content" serve 2>"$work/err"; }
    # ask URL EXPECTED-RESULT EXPECTED-PAGE: one request, answered right within a second.
    ask() {
      local start=$EPOCHREALTIME result length page=
      frame GET "$1" >&"${SERVE[1]}"
      read -r -t 30 -u "${SERVE[0]}" result length || fail "no answer to $1"
      (( length == 0 )) || LC_ALL=C read -r -N "$length" -t 30 -u "${SERVE[0]}" page
      local took=$(( (${EPOCHREALTIME/./} - ${start/./}) / 1000 ))
      [[ "$result $page" == "$2 $3" ]] || fail "$1: answered $result '$page'"
      (( took < 1000 )) || fail "$1: answered after $took ms"
    }
    peak() { awk '/^VmHWM:/ { print $2 }' "/proc/$SERVE_PID/status"; }
    # The first request starts the module (and its start-up job): not timed.
    frame GET page.htm >&"${SERVE[1]}"
    read -r -t 60 -u "${SERVE[0]}" result length || fail "no answer to the first request"
    LC_ALL=C read -r -N "$length" -t 60 -u "${SERVE[0]}" page
    ask page.htm 0 $'<html><div>header</div><p>body</p></html>\n'
    before=$(peak)
    ask fifo.htm 1 ''
    ask random.htm 1 ''
    ask includes.htm 0 ABCD
    ask "zrmedia://$work/tmp/fifo" 1 ''
    ask zrmedia:///dev/zero 1 ''
    ask zrmedia:///dev/urandom 1 ''
    ask "system.nsp?Command=ReadFile&Filename=/dev/zero" 0 ''
    ask "unattended.nsp?Platform=W2K8&Filename=$work/tmp/fifo" 0 '{"ErrorCode":0,"ReturnCode":"1"}'
    ask page.htm 0 $'<html><div>header</div><p>body</p></html>\n'
    after=$(peak)
    (( after - before < 16384 )) || fail "the shell grew from $before kB to $after kB"
    exec {SERVE[1]}>&- ;;

  no_config)
    # Without a configuration file URLs resolve against the working folder.
    got=0
    (cd "$content" && "${run_as[@]}" "$work/bin/tidewell_shell" --module "$work/bin/libtidewell.so" --no-config unused get page.htm) >"$work/out" || got=$?
    [[ $got -eq 0 ]] || fail "no configuration: status $got"
    printf '<html><div>header</div><p>body</p></html>\n' | cmp - "$work/out" || fail "no configuration: page" ;;

  unreadable_content)
    chmod 000 "$content/sub"
    chmod 000 "$content/header.htm"
    : >"$work/expected"
    expect_get "sub/nested.htm" 1 "$work/expected"
    printf '<html><p>body</p></html>\n' >"$work/expected"
    expect_get "page.htm" 0 "$work/expected"
    chmod 000 "$content"
    : >"$work/expected"
    expect_get "page.htm" 1 "$work/expected"
    chmod 755 "$content" "$content/sub"
    chmod 644 "$content/header.htm" ;;

  out_of_memory)
    # An exception inside the module (here: out of memory while a page that
    # includes itself grows) reaches no further than the entry point: result
    # 1 and an empty page, no crash. Release build only: the sanitizers
    # reserve more address space than the limit allows.
    if objdump -p "$module_bin" | grep -q 'NEEDED.*libasan'; then
      echo "skipped: sanitizer build"; exit 77
    fi
    b=$(head -c 60000 /dev/zero | tr '\0' x)
    printf '%s<?include big-self.htm?>%s' "$b" "$b" >"$content/big-self.htm"
    chmod a+r "$content/big-self.htm"
    : >"$work/expected"
    got=0
    (ulimit -v 120000; shell "$content" get big-self.htm >"$work/out" 2>"$work/err") || got=$?
    [[ $got -eq 1 ]] || { cat "$work/err"; fail "out of memory: status $got"; }
    cmp "$work/out" "$work/expected" || fail "out of memory: a page was served"
    # Without the limit the page is served, cut short by the 64 MiB limit.
    shell "$content" get big-self.htm >"$work/out"
    size=$(stat -c %s "$work/out")
    (( size > 60000000 && size <= 67108864 )) || fail "page of $size bytes" ;;

  startup_inventory)
    # The first request starts the start-up job, which saves the inventory
    # into the content folder's "cfg"; the shell ends only after the job. The
    # real backend without privileges finds no SMBIOS and no PCI functions,
    # so the inventory is empty; it equals what allstorage.nsp writes.
    chmod 777 "$content/cfg"
    printf '<AllBoards><PCI><dev id="8086100E00000000"><name>82540EM</name></dev></PCI></AllBoards>' >"$content/cfg/allboards.xml"
    chmod a+r "$content/cfg/allboards.xml"
    [[ ! -e "$content/cfg/allstorage.xml" ]] || fail "inventory present before the first request"
    printf '<div>header</div>' >"$work/expected"
    expect_get "header.htm" 0 "$work/expected"
    [[ -f "$content/cfg/allstorage.xml" ]] || fail "the start-up job saved no inventory"
    printf '{"ErrorCode":0}' >"$work/expected"
    expect_get "allstorage.nsp?Command=Create&AllBoardsXML=$content/cfg/allboards.xml&AllStorageXML=$work/tmp/page.xml" 0 "$work/expected"
    cmp "$content/cfg/allstorage.xml" "$work/tmp/page.xml" || fail "saved inventory differs from the page's"
    printf '<AllStorage PCIDeviceCount="0"/>' | cmp - "$work/tmp/page.xml" || fail "inventory of an unprivileged run"
    # Then the job probed the management processor: without a device it
    # asked for the IPMI driver (the stand-ins above).
    grep -q '^modprobe ipmi_msghandler' "$work/tmp/driver-commands" || fail "no management-processor probe" ;;

  *) fail "unknown case $case" ;;
esac
echo "ok: $case"
