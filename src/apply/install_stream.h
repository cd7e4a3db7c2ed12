#pragma once

#include <streambuf>

#include "apply/install_package.h"

enum class InstallResult {
    Installed = 0,     ///< or in place already; of a bundle, at least one member went through
    Failed = 1,        ///< a package was refused or failed, or the head of a bundle could not be used
    BundleFailed = 2,  ///< a bundle was refused, a member failed, or something stood behind the last one
    BundleEmpty = 3,   ///< a bundle ended in order without any member
};

/// Installs the package or bundle in `stream` into the journal, in one forward pass. Failures have been
/// reported as far as installPackage() and the eligibility check report them; what was staged before one
/// stays, and then the journal is not to be committed.
///
/// copyTarget:  receives every byte of the stream that the install passes; may be null.
/// imageTarget: what the caller has to do with what the package came in. A bundle is always kept.
InstallResult installStream(const InstallContext& context, std::streambuf& stream, std::streambuf* copyTarget,
                            ImageTarget& imageTarget);
