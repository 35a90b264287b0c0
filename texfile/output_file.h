// Files that are there whole or not at all.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "texfile/io_error.h"
#include "texfile/output_target.h"

namespace texfile {

// A file that is written beside its target, under a random name that no other writer can have or foresee, and
// takes the target's place when it is whole. A device, a pipe or a socket is written as it stands instead.
class OutputFile {
  public:
    OutputFile() = default;
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    // Removes what was not committed.
    ~OutputFile();

    // To be called first, once. The target's folder must be there.
    IoError Open(const std::string& path, Existing existing);

    // For writers other than Write: of a file that is empty and may be moved about in. Stays this object's.
    int Descriptor() const { return descriptor_; }
    bool IsStream() const { return target_.isStream; }

    IoError Write(std::span<const std::uint8_t> bytes);
    // Forces what was written to the disk, where errors that came late show. Commit does so by itself when it
    // replaces a file. Nothing on streams.
    IoError Sync();

    // Closes the file and puts it in the target's place, once. A file that is replaced hands down its mode
    // and, where permitted, its owner; the promise that either the old or the new file is there holds after a
    // power cut, too.
    IoError Commit();

  private:
    IoError Create();
    IoError InheritMode();
    IoError Close();
    IoError TakePlace();

    std::string path_;
    std::string temporary_;  // empty for streams
    Existing existing_ = Existing::kKeep;
    OutputTarget target_;
    int descriptor_ = -1;
    bool isThere_ = false;  // the temporary file
};

// Open, Write and Commit.
IoError WriteWholeFile(const std::string& path, std::span<const std::uint8_t> bytes, Existing existing);

}  // namespace texfile
