#pragma once

/// Runs a program in the directory "/" with the argument vector (arg0, arg1) and waits for its end. Returns
/// its raw wait status, of which 127 as an exit code says that it could not be executed; -1 if there was no
/// process or no waiting for it.
int runAndWait(const char* path, const char* arg0, const char* arg1);
