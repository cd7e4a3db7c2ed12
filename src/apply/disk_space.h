#pragma once

#include <cstdint>

#include "apply/change_journal.h"

/// What stays free on the two file systems once a journal is applied, in bytes. Negative: so much is short.
struct DiskSpace {
    std::int64_t kernelBytes;  ///< on "/flash/boot", the kernel disk
    std::int64_t diskBytes;    ///< on the rest of "/flash"

    bool suffices() const { return kernelBytes >= 0 && diskBytes >= 0; }
};

/// Holds a journal, complete but for its marker, against the free blocks of the file systems that it is for.
/// What it takes away is added and what comes from another file system subtracted, in whole blocks; temporary
/// files beside their targets have taken their room already. Where it takes more than it gives back, a
/// reserve of 32 KiB counts as used. The free blocks are those of the superuser. Changes nothing.
DiskSpace checkDiskSpace(const ChangeJournal& journal);
