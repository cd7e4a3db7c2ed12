#pragma once

/// The modes that end a change set which an earlier run left in "/ram/MANIFEST". A missing manifest is an
/// empty change set. They end with code 0 whatever happens.

/// Applies the change set. The manifest stays.
void runCommitMode();

/// Drops the change set and deletes the manifest. Temporary files that it names stay: a manifest does not
/// tell them from the sources of moves.
void runCancelMode();
