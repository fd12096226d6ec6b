#include "platform/ui/ViewController.h"

#include "platform/core/Log.h"
#include "platform/core/MainQueue.h"

namespace platform {

namespace {
const Logger kLog("ViewController: ");
}  // namespace

ViewController::ViewController() {
    MainQueue::assertMainThread("ViewController");
}

void ViewController::loadView() {
    setView(std::make_shared<View>(NSZeroRect));
}

const std::shared_ptr<View>& ViewController::view() {
    if (!view_) {
        MainQueue::assertMainThread("ViewController::view");
        loadView();
        if (!view_)
            kLog.write("loadView left no view");
    }
    return view_;
}

}  // namespace platform
