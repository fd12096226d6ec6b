#pragma once

#include <optional>
#include <string>
#include <vector>

namespace platform {
class DefaultsSuite;
}

// Turns the hand-off record in the store into one JSON line and writes it to stdout (flushed)
// and, when a record file is given, appends it there too:
//   {"event":"start","type":"public.file-url","entry":"favToParley",
//    "paths":[...],"invalidNames":[...],"invalidSizes":[...],"received":[...]}
//   {"event":"notification","type":"public.url","entry":"sendToFriend","url":"https://..."}
// An absent key is null. Texts are escaped for JSON; bytes that are not UTF-8 (file names need
// not be) become U+FFFD, one per byte, so the line is always valid UTF-8.
class HostRecordWriter {
  public:
    explicit HostRecordWriter(std::string recordFile) : recordFile_(std::move(recordFile)) {}

    // The record as it stands in |store|, for |event| ("start" or "notification"); a file record
    // adds "received" when given: where the host put each listed path (null: not taken).
    static std::string recordLine(
        const std::string& event,
        const platform::DefaultsSuite& store,
        const std::vector<std::optional<std::string>>* received = nullptr);
    // A JSON string literal for |text|.
    static std::string quote(const std::string& text);

    // Writes |line| and a newline to stdout and the record file. False when the file could not
    // be written.
    bool write(const std::string& line) const;

  private:
    std::string recordFile_;
};
