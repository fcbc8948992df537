// pellucida-cli: the batch face of the program. The same load flow, writers
// and kernels as the desktop program, driven by arguments instead of forms.
#pragma once

// Runs one command line; returns the process exit status: 0 success, 1 an
// unreadable input or a failed write, 2 wrong usage, 130 cancelled (Ctrl-C).
int Cli_Run(int argc, char** argv);
