#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/core/DefaultsSuite.h"
#include "platform/core/PropertyValue.h"
#include "share/ShareEntry.h"
#include "share/ShareType.h"

// The hand-off record a share leaves in the store it shares with the host: which keys, with
// which values, written in which groups. Each group is flushed once after its writes (never
// between them). After the type, the entry and the link, the key is read back from the store and
// logged; the file lists are not read back.
//
// Each write returns whether its group's flush succeeded. The store has logged a failure
// already, so a caller only decides what follows from it.
//
// Safe to use from any thread: the store is, and the record keeps no state of its own.
class HandoffRecord {
  public:
    explicit HandoffRecord(std::shared_ptr<platform::DefaultsSuite> store);

    // The share type; an unknown one writes nothing, yet flushes. Not read back here: start-up
    // logs the read-back once the sheet is built (logShareType), and for an unknown type the line
    // shows what an earlier share left.
    bool writeShareType(ShareType type);
    void logShareType() const;
    // The share type again (same key, same value: another sheet may have written its own since
    // start-up), then the action picked, in one group; an unknown type or no action writes
    // nothing for that key. Not read back here: the controller starts the hand-off between this
    // flush and the read-back (logShareEntry).
    bool writeShareEntry(ShareType type, ShareEntry entry);
    void logShareEntry() const;
    // The shared link's absolute string; nullopt removes the key.
    bool writeShareUrl(const std::optional<std::string>& url);
    // The three lists of a file share, each whole (empty or not), in this order.
    bool writeFileLists(const platform::StringArray& paths,
                        const platform::StringArray& invalidNames,
                        const platform::StringArray& invalidSizes);

    // The other names the host relies on: the extension's Info.plist key that starts the group's
    // identifier, the notification that wakes a running host, and where a stopped one is
    // launched from.
    static const char* teamIdentifierKey();
    static const char* notificationName();
    static const char* hostApplicationPath();

  private:
    void logStoredValue(const char* key) const;
    // Sets the key of the share type, unflushed; an unknown type sets nothing.
    void setShareType(ShareType type);

    std::shared_ptr<platform::DefaultsSuite> store_;
};
