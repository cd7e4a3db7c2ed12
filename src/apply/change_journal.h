#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "apply/staged_file.h"

enum class OpKind : std::uint32_t {
    Move = 0,    ///< rename `arg` onto the target; a cancel leaves the source alone
    Staged = 1,  ///< the same, but `arg` is a temporary file of the journal
    Link = 3,    ///< replace the target by a symbolic link with the text `arg`
    Delete = 4,  ///< delete the target, file or directory
    Copy = 5,    ///< copy `arg` over the target: what a commit makes of a rename between file systems
};

/// What is to happen to one target path.
struct ChangeOp {
    OpKind kind;
    std::string arg;

    bool operator==(const ChangeOp&) const = default;
};

/// All changes of one run: for each target path, the one thing that is to happen to it. Nothing on disk
/// changes before commit(). A path is a key as it stands, so "/flash/a" and "/flash//a" are two. The order
/// is that of the bytes of the path, here, in the manifest and in every pass of the commit.
///
/// The journal owns its temporary files: each is gone once its op is replaced, dropped or cancelled, and
/// all are gone with the journal, unless it was committed or written to a manifest. It reports nothing.
class ChangeJournal {
public:
    using Ops = std::map<std::string, ChangeOp>;

    ChangeJournal() = default;
    ChangeJournal(const ChangeJournal&) = delete;
    ChangeJournal& operator=(const ChangeJournal&) = delete;
    ~ChangeJournal();

    /// Inserts the op, or replaces the one that the target has.
    void setOp(const std::string& target, ChangeOp op);

    /// Notes the deletion of a path that exists on disk. Of a path that does not, drops what was planned.
    void removePath(const std::string& target);

    /// Forgets what was planned for a path, if anything was.
    void dropOp(const std::string& target);

    void addMove(const std::string& source, const std::string& target);
    void addLink(const std::string& text, const std::string& target);

    /// Makes a temporary file that becomes `target` at commit, in place of any earlier plan for it.
    ///
    /// sizeHint: expected size in bytes. The file lies beside its target, in the deepest directory on the
    ///           way there that exists, when that file system has more than sizeHint + 64 KiB free, else
    ///           in "/ram". 0: in "/ram", or in "/tmp" on a system without "/ram".
    /// mode:     permission bits; 0 keeps the 0600 of a new temporary file.
    ///
    /// Returns the stream to fill, to be closed before commit() or writeManifest(). On failure the stream
    /// is not open, errno tells why, and the change stays noted so that cancel() clears up.
    StagedFile stageFile(const std::string& target, std::uint32_t sizeHint, std::uint32_t mode);

    /// Stages an empty file, whose presence tells something to the rest of the system.
    void stageMarker(const std::string& target) { stageFile(target, 1, 0); }

    /// Writes one line for each op, for a later process to read. From then on the temporary files belong
    /// to that process. A failure to write the file shows in what is not there.
    ///
    ///     U <target>            Delete
    ///     L <target> <text>     Link
    ///     M <target> <source>   Move and Staged
    ///
    /// Of the fields only the third one may hold blanks.
    void writeManifest(const std::string& path);

    /// Adds the ops of a manifest; what was Staged comes back as Move. An unknown letter is skipped. False
    /// if the file cannot be opened, at a line with too few fields, or if it holds nothing at all; what was
    /// read up to there stays.
    bool readManifest(const std::string& path);

    /// Carries all ops out, in three passes: deletions and links; renames; copies for the renames that
    /// would have crossed file systems. What fails goes to standard error or is ignored, op by op, and
    /// never stops the rest. The ops stay in the journal. `spinner`: show the progress of the copies.
    void commit(bool spinner);

    /// Removes the temporary files and empties the journal.
    void cancel();

    bool empty() const { return ops_.empty(); }
    const Ops& ops() const { return ops_; }

    /// The op of a target; null if it has none.
    const ChangeOp* find(const std::string& target) const;

private:
    std::string stagingDirectory(const std::string& target, std::uint32_t sizeHint);
    void applyRemovalsAndLinks() const;
    void applyRenames();
    void applyCopies(bool spinner) const;

    Ops ops_;
    bool ownsTemporaryFiles_ = true;

    // The parent of the last staged target, and the deepest directory on the way there that exists. It stays
    // true, as directories only come with the commit, and neighbours mostly share their parent.
    std::string stagedParent_;
    std::string existingParent_;
};
