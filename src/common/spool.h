// Input that cannot be positioned, kept so that it can be.
#pragma once

// Reads a pipe, socket or terminal to its end and returns a descriptor of a file with its bytes, at its
// start; -1 where neither memory nor disk can hold them. Up to 256 MiB stay in memory, more go to a nameless
// file in TMPDIR, so that however the run ends nothing is left behind.
int spool(int input);
