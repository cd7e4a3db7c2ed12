#pragma once

#include <string>

/// Copies a regular file over `target`, which takes the source's permission bits if it is new. Anything
/// else than a regular file, and what cannot be opened, is left alone in silence. A failed write goes to
/// standard error and, like a failed read, ends the copy where it stands.
///
/// spinner: turn a character on standard output while the copy runs, one step each 20 clock ticks. The
///          steps go on across the calls of one process; wiping the last character is up to the caller.
void copyFile(const std::string& source, const std::string& target, bool spinner);
