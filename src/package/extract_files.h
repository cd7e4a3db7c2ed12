#pragma once

class ChangeJournal;
class PartReader;
class Reporter;
struct InstalledPackage;

/// Stages every regular file of PART_FILES, which the reader stands on, under "/flash", or, of a disabled
/// package, under "/flash/x/" and the package's name, and enters the targets in the package's `files`. No
/// file is held whole. On false the user has been told; what was staged before stays in the journal.
///
/// True does not mean that the part was whole: one that ends at a record's head ends in order as far as can
/// be told here. The signature decides. The reader still stands on the part.
[[nodiscard]] bool extractFiles(InstalledPackage& package, ChangeJournal& journal, PartReader& reader,
                                Reporter& reporter);
