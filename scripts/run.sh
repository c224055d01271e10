#!/usr/bin/env bash
# Builds and starts the simulated host with the plug-in and the sample project.
set -euo pipefail
cd "$(dirname "$0")/.."
echo "The simulated host application is not built yet; there is nothing to run."
