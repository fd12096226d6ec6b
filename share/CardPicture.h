#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "platform/core/Url.h"
#include "platform/ui/Image.h"
#include "share/ShareType.h"

// The preview card's picture, chosen here and nowhere else: a named image (the link thumbnail,
// the stack for several files, an icon for the one file's type) or the shared file's own picture,
// which the card shows with aspect fill. A value; any thread may make one, but choosing a photo
// reads the file, so the one-file choice belongs off the main thread.
class CardPicture {
  public:
    // The picture's side in points; a photo is read for twice that, the highest backing scale a
    // display gives us.
    static constexpr double kSide = 60;
    static constexpr double kBackingScale = 2;

    // What the card shows once built: the link thumbnail for a link; for files (and an unknown
    // type) the stack for two or more, else the blank page until the one file's URL arrives.
    static CardPicture forShare(ShareType type, size_t attachments);
    // The one shared file's picture, from its extension, once the platform has delivered its URL
    // (or nothing: the blank page).
    static CardPicture forFile(const std::optional<platform::Url>& file);

    // The named image, or "" for the shared file's own picture.
    const std::string& name() const { return name_; }
    // What to set on the card's image view; nullptr for a named image the bundle lacks or a photo
    // that cannot be read (the view then shows nothing).
    const platform::ImagePtr& image() const { return image_; }
    // The shared file's own picture: the view turns aspect fill on after setting it.
    bool isOwnPicture() const { return name_.empty(); }

  private:
    CardPicture(std::string name, platform::ImagePtr image);
    static CardPicture named(const std::string& name);
    // The photo at |path| at the card's size: the desktop's kept thumbnail when it shows the whole
    // photo with enough pixels, else a decode no larger than the card needs.
    static platform::ImagePtr photo(const std::string& path);

    std::string name_;
    platform::ImagePtr image_;
};
