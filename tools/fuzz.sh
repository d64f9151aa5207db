#!/bin/sh
# SPDX-License-Identifier: Zlib
# Runs each fuzzer of a build folder for some seconds on a copy of its seed corpus: fuzz.sh FOLDER SECONDS
set -e
folder=$1
seconds=$2
for program in "$folder"/*_fuzz; do
  [ -x "$program" ] || { echo "no fuzzers in $folder" >&2; exit 1; }
  name=$(basename "$program" _fuzz)
  corpus="$folder/corpus/$name"
  mkdir -p "$corpus"
  cp "fuzz/corpus/$name"/* "$corpus/"
  echo "$name for $seconds s"
  "$program" -max_total_time="$seconds" -max_len=4096 -rss_limit_mb=2048 -timeout=20 -print_final_stats=1 \
    -artifact_prefix="$folder/" "$corpus" >"$folder/$name.log" 2>&1 || { tail -n 40 "$folder/$name.log"; exit 1; }
  grep -E 'number_of_executed_units|peak_rss' "$folder/$name.log"
done
