#!/usr/bin/env bash
# Every shell script of the repository passes shellcheck.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
mapfile -t scripts < <(scripts/sources shell)
((${#scripts[@]} > 10)) || { echo "only ${#scripts[@]} shell scripts found" >&2 && exit 1; }
shellcheck "${scripts[@]}"
echo "${#scripts[@]} scripts"
