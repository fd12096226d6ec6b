#include "platform/ui/ViewController.h"

#include "platform/core/Log.h"

namespace platform {

namespace {
const Logger kLog("ViewController: ");
}  // namespace

void ViewController::loadView() {
    setView(std::make_shared<View>(NSZeroRect));
}

const std::shared_ptr<View>& ViewController::view() {
    if (!view_) {
        loadView();
        if (!view_)
            kLog.write("loadView left no view");
    }
    return view_;
}

}  // namespace platform
