#include "tests/platform/core/CoreTestSupport.h"

// A file URL is both a file URL and a URL, a web URL only a URL; loads run off the main thread;
// asking for what a provider cannot give is a logged error, a loader that gives nothing is not.
TEST(ItemProviderTest, ProvidersConformLoadOffTheMainThreadAndTheRequestEndsOnce) {
    auto file = ItemProvider::withURL(Url::fileURLWithPath("/tmp/a.txt"));
    auto web = ItemProvider::withURL(*Url::URLWithString("https://parley.example/x"));
    auto text = ItemProvider::withTypes({"public.plain-text"}), empty = ItemProvider::withTypes({});
    empty->registerItemForTypeIdentifier(kUTTypeFileURL, [] { return std::optional<Url>(); });
    const std::tuple<std::shared_ptr<ItemProvider>, std::string, bool, std::string> cases[] = {
        {file, kUTTypeFileURL, true, "file:///tmp/a.txt"},
        {file, kUTTypeURL, true, "file:///tmp/a.txt"},
        {web, kUTTypeURL, true, "https://parley.example/x"},
        {web, kUTTypeFileURL, false, ""},
        {text, "public.plain-text", true, ""},
        {empty, kUTTypeURL, true, "-"}};
    for (const auto& [provider, type, conforms, item] : cases) {
        SCOPED_TRACE(type + " for " + item);
        EXPECT_EQ(provider->hasItemConformingToTypeIdentifier(type), conforms);
        LogCapture log;
        auto loaded = std::make_shared<std::string>();  // the item or error, and where it ran
        auto done = std::make_shared<std::atomic<bool>>(false);
        provider->loadItemForTypeIdentifier(
            type, nullptr, [=](const std::optional<Url>& url, const std::optional<Error>& error) {
                *loaded = url ? url->absoluteString() : error ? error->domain : "-";
                *done = !MainQueue::isMainThread();
            });
        ASSERT_TRUE(EventLoop::runUntil([&] { return done->load(); }, 5s));
        EXPECT_EQ(*loaded, item.empty() ? NSItemProviderErrorDomain : item);
        EXPECT_EQ(log.lines().empty(), !item.empty());
    }

    // The first ending counts: its handler runs on the main thread, not expired; a later one is
    // only logged.
    ExtensionContext context({});
    std::atomic<bool> handledOnMain{false};
    context.completeRequestReturningItems(
        {}, [&](bool expired) { handledOnMain = MainQueue::isMainThread() && !expired; });
    EXPECT_TRUE(EventLoop::runUntil([&] { return handledOnMain.load(); }, 5s));
    LogCapture log;
    context.cancelRequestWithError(
        Error::errorWithDomain(NSCocoaErrorDomain, NSUserCancelledError));
    EXPECT_EQ(ExtensionContext::State::Completed, context.state());
    EXPECT_FALSE(context.cancellationError());
    EXPECT_EQ(1u, log.lines().size());
}
