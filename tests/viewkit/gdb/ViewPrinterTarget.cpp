// The program the debugger test runs under gdb: it stops in viewTreeReady with a tree built.
#include "platform/ui/DisplayEventLoop.h"
#include "viewkit/PLSOutlineButton.h"
#include "viewkit/PLSView.h"
#include "viewkit/ViewDescriptionSExt.h"

PLSView* inspectedView = nullptr;

extern "C" __attribute__((noinline)) void viewTreeReady() {
    asm volatile("");
}

int main(int argc, char** argv) {
    platform::DisplayEventLoop loop(argc, argv);
    auto row = std::make_shared<PLSView>(platform::NSMakeRect(0, 0, 200, 100));
    auto button = std::make_shared<PLSOutlineButton>(platform::NSMakeRect(10, 10, 80, 20));
    button->setTitle("Send");
    row->addSubview(button);
    inspectedView = row.get();
    viewTreeReady();
    // Describing a view links the descriptions in, and the printer with them.
    return SExt::selfDesc(*row).empty();
}
