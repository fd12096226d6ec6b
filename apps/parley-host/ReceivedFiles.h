#pragma once

#include <optional>
#include <string>
#include <vector>

// What a host does with the files a share hands it: it takes them out of the group's container
// into a folder of its own, one per record. The extension never replaces or deletes anything in
// the container, so a file left there would be handed over again, in place of a later share's
// file of the same name.
class ReceivedFiles {
  public:
    // |container|: the group's shared container; |inbox|: the folder under which each record's
    // files get a folder of their own.
    ReceivedFiles(std::string container, std::string inbox);

    // Moves every path of |paths| that names an entry directly inside the container into one new
    // folder under the inbox. Returns, in the order of |paths|, where each now lies: a path
    // listed twice gets the same answer twice, and one that is outside the container or no
    // longer there (taken at an earlier read) gets nullopt.
    std::vector<std::optional<std::string>> take(const std::vector<std::string>& paths) const;

    // The inbox of a host: ${XDG_DATA_HOME:-$HOME/.local/share}/parley-host/received.
    static std::string defaultInbox();

  private:
    // A new, empty folder under the inbox; empty when none could be made.
    std::string makeRecordFolder() const;

    std::string container_;
    std::string inbox_;
};
