#include "apply/install_package.h"

#include <array>
#include <fstream>
#include <memory>

#include "apply/boot_image_mode.h"
#include "apply/package_changes.h"
#include "database/record_writer.h"
#include "package/extract_files.h"
#include "package/package_header.h"
#include "package/package_signature.h"
#include "planning/eligibility.h"
#include "planning/state_changes.h"

namespace {

/// One run of installPackage().
class Installation {
public:
    Installation(const InstallContext& context, PartReader& reader, const PackageDependency* bundleEntry,
                 ImageTarget& imageTarget)
        : context_(context),
          db_(context.db),
          journal_(context.journal),
          reader_(reader),
          bundleEntry_(bundleEntry),
          imageTarget_(imageTarget) {}

    std::optional<std::string> run() {
        if (!parsePackageHeader(*package_, reader_)) return std::nullopt;
        if (!package_->hasUsableName()) return broken();
        if (bundleEntry_ != nullptr && package_->name == bundleEntry_->name) return std::nullopt;
        if (isStreamKept()) imageTarget_.directory = package_->directory();
        requestConversion();

        const InstallFlags standing = judge();
        if ((standing & (~context_.flags | EligibleSame)) != 0) return leaveInPlace(standing);

        if (bundleEntry_ != nullptr) package_->bundle = *bundleEntry_;
        if (isRecorded()) removeInstalledVersion();
        db_.showProgress(*package_, reader_);
        if (isRecorded() && !claimPackageDir(journal_, *package_)) return std::nullopt;
        if (!takeContents()) return std::nullopt;
        if (!isSound()) return broken();
        if (isRecorded() && !writePackageRecord(*package_, journal_, db_)) return std::nullopt;
        stageMarkers();
        if (!package_->isMember()) db_.setStatus("");
        return enterDatabase();
    }

private:
    std::optional<std::string> broken() {
        db_.reportBrokenPackage(*package_);
        return std::nullopt;
    }

    bool hasFlag(std::uint32_t flag) const { return (package_->flags & flag) != 0; }

    bool isRecorded() const { return reader_.magic() != UNRECORDED_MAGIC; }

    bool becomesBootImage() const { return hasFlag(PKG_FLAG_BOOT) && bootImageMode(); }

    /// Whether the stream has to be kept, since nothing else on flash will describe the package or hold its
    /// contents.
    bool isStreamKept() const {
        return imageTarget_.isStream && (package_->hasImage || hasFlag(PKG_FLAG_NO_METADATA) || becomesBootImage());
    }

    /// The configuration of a main system before version 7 has to be converted at the next start.
    void requestConversion() const {
        if (package_->name == "system" && majorVersion(package_->version) < 7) std::ofstream("/rw/CONVERT");
    }

    /// Sets the state that the package is to have, and tells what stands against it.
    InstallFlags judge() {
        // Nothing is said of a member, which may stay as it is, nor of a conflict, which only disables.
        const InstallFlags waived = bundleEntry_ != nullptr ? ~InstallFlags{0} : context_.flags | EligibleConflict;
        const InstallFlags standing = checkInstallEligibility(db_, *package_, waived);
        if (const auto carried = context_.carriedStates.find(package_->name); carried != context_.carriedStates.end()) {
            package_->disabled = carried->second;
            package_->user = true;
        }
        if ((standing & EligibleConflict) != 0) package_->disabled = true;
        return standing & ~EligibleConflict;
    }

    /// Ends the installation of a package that is not to be installed. The result is the installed package
    /// of its name if that may stand for it.
    std::optional<std::string> leaveInPlace(InstallFlags standing) {
        if (bundleEntry_ != nullptr) {
            while (reader_.good() && reader_.partId() != PART_PACKAGE_HEADER) reader_.nextPart();
            return db_.find(package_->name) != nullptr ? std::optional(package_->name) : std::nullopt;
        }
        if ((standing & EligibleRefused) != 0 || (standing & EligibleSame) == 0) return std::nullopt;
        return confirmInstalled();
    }

    std::optional<std::string> confirmInstalled() {
        // What is going to replace a good image has to be good itself, and read to its end.
        const bool replacesImage = imageTarget_.isStream ? !imageTarget_.directory.empty() : package_->hasImage;
        if (replacesImage && !isRestSound()) return broken();
        if ((context_.flags & allowSameVersion) != 0) {
            db_.setStatus(std::string(78, ' '));
            db_.setStatus("");
            db_.info("installed %s%s", package_->disabled ? "(disabled) " : "", nameVersion(*package_).c_str());
            imageTarget_.bootImage = (db_.find(package_->name)->flags & PKG_FLAG_BOOT) != 0;
        }
        return package_->name;
    }

    void removeInstalledVersion() {
        InstalledPackage* installed = db_.find(package_->name);
        if (installed == nullptr) return;
        removePackage(journal_, *installed);
        db_.release(*installed);
    }

    /// Reads past the image and stages the files.
    bool takeContents() {
        if (reader_.partId() == PART_IMAGE) {
            passImage();
            reader_.nextPart();
        }
        if (reader_.partId() == PART_FILES) {
            if (!becomesBootImage() && !extractFiles(*package_, journal_, reader_, db_)) return false;
            reader_.nextPart();
        }
        return true;
    }

    /// Nothing here stores the image: that is the file or stream that the package comes in.
    void passImage() {
        std::array<char, 4096> piece;
        while (reader_.good() && reader_.partLeft() != 0) {
            db_.showProgress(*package_, reader_);
            const auto wanted = std::min<std::uint32_t>(piece.size(), reader_.partLeft());
            reader_.read(piece.data(), static_cast<std::streamsize>(wanted));
        }
    }

    /// Whether the signature, on which the reader should stand now, holds, and the package ends behind it.
    bool isSound() {
        if (!checkPackageSignature(reader_, signatureLevel(*package_))) return false;
        reader_.nextPart();
        return package_->isMember() || isAtEnd();
    }

    /// No hash covers what stands behind the signature, so nothing with content may.
    bool isAtEnd() {
        if (reader_.partId() == PART_ARCHITECTURE) reader_.nextPart();
        if (reader_.partId() == PART_DEPENDENCIES) {
            if (reader_.partSize() != 0) return false;
            reader_.nextPart();
        }
        return reader_.partId() == PART_END;
    }

    bool isRestSound() {
        if (reader_.partId() == PART_IMAGE) reader_.nextPart();
        if (reader_.partId() == PART_FILES) reader_.nextPart();
        return isSound();
    }

    void stageMarkers() {
        const bool isBranding = package_->name == "branding";
        if (hasFlag(PKG_FLAG_BOOT) || isBranding) journal_.stageMarker("/flash/UPGRADED");
        if (isBranding) journal_.stageMarker("/flash/BRANDING_INSTALLED");
    }

    std::optional<std::string> enterDatabase() {
        std::string name = package_->name;
        imageTarget_.bootImage = becomesBootImage();
        db_.packages.push_back(std::move(package_));
        applySchedule(db_, journal_, 0);  // which may find that the package has to go again
        return name;
    }

    const InstallContext& context_;
    PackageDb& db_;
    ChangeJournal& journal_;
    PartReader& reader_;
    const PackageDependency* bundleEntry_;
    ImageTarget& imageTarget_;
    std::unique_ptr<InstalledPackage> package_ = std::make_unique<InstalledPackage>("");
};

}  // namespace

std::optional<std::string> installPackage(const InstallContext& context, PartReader& reader,
                                          const PackageDependency* bundleEntry, ImageTarget& imageTarget) {
    return Installation(context, reader, bundleEntry, imageTarget).run();
}
