#pragma once

class PackageDb;

/// The post-install log, "/flash/postlog": the permanent lines of this run and of earlier ones.

/// Takes the lines of earlier runs into the messages of this one, and keeps the file from now on as a block
/// of zeros, which claims its room and marks a run that did not end. A last line without a line end is
/// dropped, and so is such a block.
void takeOverPostLog(PackageDb& db);

/// Writes the messages: over the file if its lines were taken over, else behind them. Does nothing if
/// neither was taken over nor said anything. A file that cannot be written loses the lines.
void flushPostLog(const PackageDb& db);
