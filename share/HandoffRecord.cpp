#include "share/HandoffRecord.h"

#include "share/ControllerSupport.h"
#include "share/HandoffKeys.h"

using controller_support::kLog;

HandoffRecord::HandoffRecord(std::shared_ptr<platform::DefaultsSuite> store)
    : store_(std::move(store)) {}

void HandoffRecord::setShareType(ShareType type) {
    if (type == ShareTypeUrl)
        store_->setObject(std::string(handoff::kTypeUrl), handoff::kShareTypeKey);
    else if (type == ShareTypeFile)
        store_->setObject(std::string(handoff::kTypeFileUrl), handoff::kShareTypeKey);
}

bool HandoffRecord::writeShareType(ShareType type) {
    setShareType(type);
    return store_->synchronize();
}

void HandoffRecord::logShareType() const {
    logStoredValue(handoff::kShareTypeKey);
}

bool HandoffRecord::writeShareEntry(ShareType type, ShareEntry entry) {
    setShareType(type);
    if (entry == ShareEntrySendToFriend)
        store_->setObject(std::string(handoff::kEntrySendToFriend), handoff::kShareEntryKey);
    else if (entry == ShareEntryFavToParley)
        store_->setObject(std::string(handoff::kEntryFavToParley), handoff::kShareEntryKey);
    return store_->synchronize();
}

void HandoffRecord::logShareEntry() const {
    logStoredValue(handoff::kShareEntryKey);
}

bool HandoffRecord::writeShareUrl(const std::optional<std::string>& url) {
    std::optional<platform::PropertyValue> value;
    if (url)
        value = *url;
    store_->setObject(value, handoff::kShareUrlKey);
    const bool flushed = store_->synchronize();
    logStoredValue(handoff::kShareUrlKey);
    return flushed;
}

bool HandoffRecord::writeFileLists(const platform::StringArray& paths,
                                   const platform::StringArray& invalidNames,
                                   const platform::StringArray& invalidSizes) {
    store_->setObject(paths, handoff::kSharePathArrayKey);
    store_->setObject(invalidNames, handoff::kShareInvalidFileNamesKey);
    store_->setObject(invalidSizes, handoff::kShareInvalidFileSizesKey);
    return store_->synchronize();
}

const char* HandoffRecord::teamIdentifierKey() {
    return handoff::kTeamIdentifierKey;
}

const char* HandoffRecord::notificationName() {
    return handoff::kNotificationName;
}

const char* HandoffRecord::hostApplicationPath() {
    return handoff::kHostApplicationPath;
}

// Read back rather than taken from the write: for an unknown type the line shows what an earlier
// share left.
void HandoffRecord::logStoredValue(const char* key) const {
    kLog.write("NSUserDefaults set value [" + platform::describe(store_->objectForKey(key)) +
               "] for key [" + key + "].");
}
