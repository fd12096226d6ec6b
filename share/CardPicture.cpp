#include "share/CardPicture.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <utility>

namespace {

constexpr const char* kUnknownFile = "Fileicon-Unknow";
// In the extension table: the file shows itself.
constexpr const char* kOwnPicture = "";

// The extension table, walked in order; the first match wins.
constexpr std::pair<const char*, const char*> kIconsByExtension[] = {
    {"pdf", "Fileicon-Pdf"}, {"ppt", "Fileicon-Ppt"},  {"pptx", "Fileicon-Ppt"},
    {"txt", "Fileicon-Txt"}, {"doc", "Fileicon-Word"}, {"docx", "Fileicon-Word"},
    {"zip", "Fileicon-Zip"}, {"xls", "Fileicon-Xls"},  {"xlsx", "Fileicon-Xls"},
    {"png", kOwnPicture},    {"jpeg", kOwnPicture},    {"jpg", kOwnPicture},
};

std::string lowercased(std::string text) {
    for (char& c : text)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

std::string nameForExtension(const std::string& extension) {
    for (const auto& [known, name] : kIconsByExtension)
        if (extension == known)
            return name;
    return kUnknownFile;
}

}  // namespace

CardPicture::CardPicture(std::string name, platform::ImagePtr image)
    : name_(std::move(name)), image_(std::move(image)) {}

CardPicture CardPicture::named(const std::string& name) {
    return CardPicture(name, platform::Image::imageNamed(name));
}

CardPicture CardPicture::forShare(ShareType type, size_t attachments) {
    if (type == ShareTypeUrl)
        return named("link_thumbnail");
    return named(attachments >= 2 ? "Multi-Fileicon" : kUnknownFile);
}

CardPicture CardPicture::forFile(const std::optional<platform::Url>& file) {
    const std::string name = nameForExtension(file ? lowercased(file->pathExtension()) : "");
    if (name != kOwnPicture)
        return named(name);
    return CardPicture(kOwnPicture, photo(file->path()));
}

platform::ImagePtr CardPicture::photo(const std::string& path) {
    const platform::Size own = platform::Image::pixelSizeOfFile(path);
    const double cover = kSide * kBackingScale;
    if (own.width > 0 && own.height > 0) {
        const double factor = std::max(cover / own.width, cover / own.height);
        // A thumbnail can only stand in for a photo larger than the card needs.
        if (factor < 1) {
            const platform::Size needed{std::ceil(own.width * factor),
                                        std::ceil(own.height * factor)};
            platform::ImagePtr kept = platform::Image::imageWithKeptThumbnailOfFile(path, needed);
            // It must show the whole photo: the same proportions, to a pixel of rounding (a
            // thumbnail padded to another shape would show bands the photo does not have).
            if (kept &&
                std::abs(kept->size().height - kept->size().width * own.height / own.width) <= 1) {
                // Crops are computed in the photo's own points, whatever picture stands in.
                kept->setSize(own);
                return kept;
            }
        }
    }
    return platform::Image::imageWithContentsOfFile(path, {kSide, kSide}, kBackingScale);
}
