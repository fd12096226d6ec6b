#include "platform/ui/ExifThumbnail.h"

#include <cstdint>
#include <optional>

namespace platform {

namespace {

constexpr unsigned char kMarker = 0xFF;
constexpr unsigned char kStartOfImage = 0xD8;
constexpr unsigned char kStartOfScan = 0xDA;
constexpr unsigned char kEndOfImage = 0xD9;
constexpr unsigned char kApp1 = 0xE1;
constexpr std::string_view kExifHeader("Exif\0\0", 6);
constexpr uint16_t kTiffMagic = 42;
constexpr uint16_t kTagThumbnailOffset = 0x0201;
constexpr uint16_t kTagThumbnailLength = 0x0202;
constexpr uint16_t kTypeShort = 3;
constexpr uint16_t kTypeLong = 4;
constexpr size_t kEntrySize = 12;

unsigned char byteAt(std::string_view bytes, size_t at) {
    return static_cast<unsigned char>(bytes[at]);
}

// Reads an unsigned integer of |width| bytes at |at|, in the byte order the TIFF header names.
std::optional<uint32_t> readInteger(std::string_view bytes,
                                    size_t at,
                                    size_t width,
                                    bool bigEndian) {
    if (at > bytes.size() || bytes.size() - at < width)
        return std::nullopt;
    uint32_t value = 0;
    for (size_t i = 0; i < width; ++i) {
        const size_t index = bigEndian ? i : width - 1 - i;
        value = (value << 8) | byteAt(bytes, at + index);
    }
    return value;
}

}  // namespace

std::string_view ExifThumbnail::locate(std::string_view jpegStart) {
    if (jpegStart.size() < 4 || byteAt(jpegStart, 0) != kMarker ||
        byteAt(jpegStart, 1) != kStartOfImage)
        return {};
    size_t at = 2;
    while (at + 4 <= jpegStart.size()) {
        if (byteAt(jpegStart, at) != kMarker)
            return {};
        const unsigned char marker = byteAt(jpegStart, at + 1);
        if (marker == kMarker) {  // fill byte
            ++at;
            continue;
        }
        if (marker == kStartOfScan || marker == kEndOfImage)
            return {};  // the EXIF block always comes before the picture's data
        const size_t length = *readInteger(jpegStart, at + 2, 2, true);
        if (length < 2)
            return {};
        const std::string_view segment = jpegStart.substr(at + 4, length - 2);
        if (marker == kApp1 && segment.substr(0, kExifHeader.size()) == kExifHeader)
            return locateInTiff(segment.substr(kExifHeader.size()));
        at += 2 + length;
    }
    return {};
}

std::string_view ExifThumbnail::locateInTiff(std::string_view tiff) {
    const std::string_view order = tiff.substr(0, 2);
    if (order != "II" && order != "MM")
        return {};
    const bool bigEndian = order == "MM";
    auto read16 = [&](size_t at) { return readInteger(tiff, at, 2, bigEndian); };
    auto read32 = [&](size_t at) { return readInteger(tiff, at, 4, bigEndian); };
    if (read16(2) != kTiffMagic)
        return {};
    // The first directory describes the photo; the one it links to, the thumbnail.
    const std::optional<uint32_t> photoDirectory = read32(4);
    const std::optional<uint32_t> photoEntries =
        photoDirectory ? read16(*photoDirectory) : std::nullopt;
    if (!photoEntries)
        return {};
    const std::optional<uint32_t> thumbnailDirectory =
        read32(size_t(*photoDirectory) + 2 + kEntrySize * *photoEntries);
    const std::optional<uint32_t> thumbnailEntries =
        thumbnailDirectory && *thumbnailDirectory != 0 ? read16(*thumbnailDirectory) : std::nullopt;
    if (!thumbnailEntries)
        return {};
    std::optional<uint32_t> offset;
    std::optional<uint32_t> length;
    for (uint32_t i = 0; i < *thumbnailEntries; ++i) {
        const size_t entry = size_t(*thumbnailDirectory) + 2 + kEntrySize * i;
        const std::optional<uint32_t> tag = read16(entry);
        const std::optional<uint32_t> type = read16(entry + 2);
        if (!tag || !type)
            return {};
        if (*tag != kTagThumbnailOffset && *tag != kTagThumbnailLength)
            continue;
        std::optional<uint32_t> value;
        if (*type == kTypeLong)
            value = read32(entry + 8);
        else if (*type == kTypeShort)
            value = read16(entry + 8);
        (*tag == kTagThumbnailOffset ? offset : length) = value;
    }
    if (!offset || !length || *offset > tiff.size() || tiff.size() - *offset < *length)
        return {};
    return tiff.substr(*offset, *length);
}

}  // namespace platform
