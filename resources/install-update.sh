#!/bin/bash
# usage: install-update.sh NEW INSTALLED PID VERSION
#
# Waits for process PID, the running application, to end; puts a copy of the bundle NEW in the place of the bundle
# INSTALLED; starts it; and puts the former bundle back and starts that when the new one does not stay up. VERSION is
# for the log. Both bundles are given by absolute paths. It uses no network and changes nothing but INSTALLED and its
# two neighbours named below.
#
# At every moment INSTALLED is one whole bundle, the former or the new one: the copy is finished and on the disk before
# it takes the place, and it does so in one exchange of names that the kernel carries out as a whole. A cut at any step
# leaves at most a neighbour behind, which the next update clears away.
#   .NAME.update-incoming   the copy, before the exchange; the former bundle, after it
#   NAME.before-update      the former bundle, kept once the new one is up
#
# Up means: what was started lives for the whole watch. When that process ends sooner, the new version still counts as
# up while the program runs all the same (a launcher that started it and left, or a copy that somebody started in the
# meantime), and when it had settled and ended with 0: somebody quit it.
#
# Another update of the bundle may be under way, watching the very application that quits for this one: it is waited for.
# When it has brought the application back, this one changes nothing. Whatever happens, an application that has quit is
# started again, in whichever version is in place.
#
# Status: 0 the new bundle is in place; 1 the former one is; 64 the arguments are wrong and nothing was done.
# Log: zemrak-printer/install-update.log in $XDG_STATE_HOME, else in ~/.local/state.
# Environment, whole seconds: ZEMRAK_UPDATE_QUIT_SECONDS   patience with PID (60); after it nothing is changed or started
#                             ZEMRAK_UPDATE_WATCH_SECONDS  how long the new version is watched (20)
#                             ZEMRAK_UPDATE_SETTLE_SECONDS when it may be quit without being taken for broken (5)
#                             ZEMRAK_UPDATE_TURN_SECONDS   patience with another update (180)
set -u

ticks_per_second=5
log_bytes=262144

# seconds NAME DEFAULT: the ticks in that many seconds. Ticks are counted, so a clock that is set changes no patience.
seconds() {
  local value=${!1:-}
  [[ $value =~ ^[0-9]{1,4}$ ]] || value=$2
  echo $((10#$value * ticks_per_second))
}

open_log() {
  local state=${XDG_STATE_HOME:-}
  [[ $state == /* ]] || state=${HOME:-}/.local/state
  local file=$state/zemrak-printer/install-update.log
  if [[ $state == /.local/state ]] || ! (umask 077 && mkdir -p "${file%/*}" && : >>"$file") 2>/dev/null; then
    file=/dev/null
  elif (($(stat -c %s "$file") > log_bytes)); then
    : >"$file"
  fi
  exec 8>>"$file"
}

log() {
  local text="$*"
  printf '%(%F %T)T [%s] %s\n' -1 "$$" "${text//[[:cntrl:]]/?}" >&8 2>/dev/null
}

# Without the lock, which would outlive a script that is killed.
pause() { sleep 0.2 9>&-; }

# alive PID: sets parent, session and born. A process that only waits to be reaped is none.
alive() {
  local line fields
  { read -r line <"/proc/$1/stat"; } 2>/dev/null || return 1
  read -ra fields <<<"${line##*) }"
  parent=${fields[1]} session=${fields[3]} born=${fields[19]}
  [[ ${fields[0]} != [ZX] ]]
}

# The application has ended when the process is gone, or when its number has passed to a younger one.
wait_for_end() {
  alive "$pid" || return 0
  local first=$born ticks
  ticks=$(seconds ZEMRAK_UPDATE_QUIT_SECONDS 60)
  for ((; ticks > 0; --ticks)); do
    pause
    alive "$pid" && [[ $born == "$first" ]] || return 0
  done
  return 1
}

# exchange A B: two folders of the same parent trade names. No stock program of every supported system offers that
# call (renameat2 with its exchange flag), so perl makes it; the C library has no say in it, hence the numbers. A file
# system without it gets renames, in one process that does not end with this script.
exchange() {
  # shellcheck disable=SC2016 # the dollars are perl's
  perl -e '
    use strict;
    use Config;
    my ($from, $to) = @ARGV;
    my %renameat2 = (x86_64 => 316, aarch64 => 276, riscv64 => 276, arm => 382, i386 => 353, i686 => 353);
    my ($processor) = $Config{archname} =~ /^([^-]+)/;
    my $number = $renameat2{$processor};
    my ($current_folder, $exchange) = (-100, 2);
    exit 0 if $number && syscall($number, $current_folder, $from, $current_folder, $to, $exchange) == 0;
    print "no exchange here (", ($number ? $! : $processor), "), renaming";
    my $aside = "$from.aside";
    rename($to, $aside) or die "$to: $!\n";
    if (!rename($from, $to)) {
      my $why = $!;
      rename($aside, $to) or die "$from: $why; and it cannot be put back from $aside: $!\n";
      die "$from: $why\n";
    }
    rename($aside, $from) or print "; $aside stays";
  ' "$1" "$2" 2>&1
}

# launch PROGRAM: starts it as the desktop would, with none of the signals ignored that nohup and a background job ignore.
launch() {
  setsid env --default-signal "$1" </dev/null >/dev/null 2>&1 8>&- 9>&- &
  launched=$!
}

# runs: the program runs, whoever started it.
runs() {
  local entry
  for entry in /proc/[0-9]*; do
    [[ $entry/exe -ef $program ]] && return 0
  done
  return 1
}

# lives_on STATUS: the program runs although the process that was started has ended with STATUS.
lives_on() {
  local entry
  runs && return 0
  [[ $1 == 0 ]] || return 1
  for entry in /proc/[0-9]*; do
    alive "${entry#/proc/}" && [[ $session == "$launched" ]] && return 0
  done
  return 1
}

stays_up() {
  local status='' tick watch settle
  watch=$(seconds ZEMRAK_UPDATE_WATCH_SECONDS 20)
  settle=$(seconds ZEMRAK_UPDATE_SETTLE_SECONDS 5)
  for ((tick = 1; tick <= watch; ++tick)); do
    pause
    if [[ -z $status ]]; then
      alive "$launched" && [[ $parent == "$$" ]] && continue
      wait "$launched"
      status=$?
      log "the new version's process ended with $status"
    fi
    lives_on "$status" && continue
    [[ $status == 0 ]] && ((tick > settle)) && return 0
    return 1
  done
  return 0
}

# The application has quit for this update: it must come back, whichever version it is.
give_up() {
  log "$1; the former version stays"
  [[ $incoming ]] && rm -rf -- "$incoming"
  launch "$program"
  exit 1
}

# take_turn: one update at a time. The lock ends with the script that holds it, however that ends.
take_turn() {
  local tick
  [[ -r $folder ]] || return 0
  exec 9<"$folder"
  flock -n -E 75 9
  [[ $? -eq 75 ]] || return 0
  log "another update of this bundle is under way"
  flock -w "$(($(seconds ZEMRAK_UPDATE_TURN_SECONDS 180) / ticks_per_second))" -E 75 9
  [[ $? -eq 75 ]] && give_up "the other update does not end"
  # What it has started as its last act may not be the program yet.
  for ((tick = 0; tick < ticks_per_second; ++tick)); do
    if runs; then
      log "the other update has started the application; nothing is changed"
      exit 1
    fi
    pause
  done
}

install() {
  local why
  [[ $new != "$installed" && $new/ != "$installed"/* && $installed/ != "$new"/* ]] || give_up "the bundles overlap"
  [[ -f $new/bin/zemrak-printer && -x $new/bin/zemrak-printer ]] || give_up "the new bundle has no program that can run"

  incoming=$folder/.$name.update-incoming
  rm -rf -- "$incoming" || give_up "the remains of an earlier update cannot be cleared away"
  why=$(cp -aT -- "$new" "$incoming" 2>&1) || give_up "the new bundle cannot be copied: ${why:0:300}"
  sync -f "$incoming" || give_up "the copy does not reach the disk"
  why=$(exchange "$incoming" "$installed") || give_up "the bundles cannot be exchanged: $why"
  log "version $version is in place${why:+ ($why)}"

  launch "$program"
  if stays_up; then
    log "version $version is up"
    { rm -rf -- "$kept" && mv -T -- "$incoming" "$kept"; } || log "the former version stays at $incoming"
    sync -f "$folder"
    exit 0
  fi
  if ! why=$(exchange "$incoming" "$installed"); then
    log "version $version does not stay up, and the former one cannot be put back: $why"
    exit 1
  fi
  give_up "version $version does not stay up"
}

main() {
  open_log
  if [[ $# -ne 4 || $1 != /* || $2 != /* || ! $3 =~ ^[1-9][0-9]*$ ]]; then
    log "wrong arguments: $*"
    exit 64
  fi
  cd / || exit 1
  pid=$3 version=$4 incoming=''
  log "version $version: $1 is to replace $2"
  if ! installed=$(realpath -e -- "$2") || [[ ! -d $installed || $installed == / ]]; then
    log "there is no bundle to replace"
    exit 1
  fi
  new=$(realpath -m -- "$1")
  folder=$(dirname -- "$installed") name=$(basename -- "$installed")
  program=$installed/bin/zemrak-printer kept=$folder/$name.before-update

  if ! wait_for_end; then
    log "process $pid does not end; nothing is changed"
    exit 1
  fi
  take_turn
  install
}

# Read to its end before anything is done, since the file lies in the bundle that is replaced. main always exits.
main "$@"
