#pragma once

#include <memory>
#include <ostream>

#include "platform/file_sink.h"

/// Output stream to the temporary file that stands in for a target until the commit. It goes through the
/// descriptor that made the file and never opens it by name. Closed with the object at the latest; who needs
/// to know whether all was written closes it before.
class StagedFile final : public std::ostream {
public:
    /// Without a descriptor the stream is not open, and in the bad state.
    explicit StagedFile(UniqueFd fd) : std::ostream(nullptr), sink_(std::make_unique<FileSink>(std::move(fd))) {
        rdbuf(sink_.get());
        if (!sink_->isOpen()) setstate(badbit);
    }
    StagedFile(StagedFile&& other) noexcept : std::ostream(std::move(other)), sink_(std::move(other.sink_)) {
        set_rdbuf(sink_.get());
    }
    StagedFile(const StagedFile&) = delete;
    StagedFile& operator=(const StagedFile&) = delete;
    StagedFile& operator=(StagedFile&&) = delete;
    ~StagedFile() override = default;

    bool isOpen() const { return sink_->isOpen(); }

    /// Sets the bad state, and leaves errno standing, if not every byte could be written.
    void close() {
        if (!sink_->finish()) setstate(badbit);
    }

private:
    std::unique_ptr<FileSink> sink_;
};
