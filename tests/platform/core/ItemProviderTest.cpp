#include "tests/platform/core/CoreTestSupport.h"

#include "platform/core/ExtensionContext.h"
#include "platform/core/ItemProvider.h"

using namespace platform;
using namespace std::chrono_literals;

namespace {

struct LoadResult {
    std::mutex mutex;
    bool done = false;
    bool onMainThread = true;
    std::optional<Url> item;
    std::optional<Error> error;
};

std::shared_ptr<LoadResult> load(const std::shared_ptr<ItemProvider>& provider,
                                 const std::string& type) {
    auto result = std::make_shared<LoadResult>();
    provider->loadItemForTypeIdentifier(
        type, nullptr, [result](const std::optional<Url>& item, const std::optional<Error>& error) {
            std::lock_guard<std::mutex> lock(result->mutex);
            result->item = item;
            result->error = error;
            result->onMainThread = MainQueue::isMainThread();
            result->done = true;
        });
    EXPECT_TRUE(EventLoop::runUntilIdle(5s));
    return result;
}

}  // namespace

// A file URL is both a file URL and a URL, a web URL only a URL; loads run off the main thread;
// asking for what a provider cannot give is a logged error.
TEST(ItemProviderTest, FileURLConformsToBothTypesAndLoadsOffTheMainThread) {
    auto file = ItemProvider::withURL(Url::fileURLWithPath("/tmp/a.txt"));
    auto web = ItemProvider::withURL(*Url::URLWithString("https://parley.example/x"));
    EXPECT_FALSE(file->hasItemConformingToTypeIdentifier("public.plain-text"));
    EXPECT_FALSE(web->hasItemConformingToTypeIdentifier(kUTTypeFileURL));
    struct Case {
        std::shared_ptr<ItemProvider> provider;
        const char* type;
        const char* expected;  // nullptr: an error
    } cases[] = {{file, kUTTypeFileURL, "file:///tmp/a.txt"},
                 {file, kUTTypeURL, "file:///tmp/a.txt"},
                 {web, kUTTypeURL, "https://parley.example/x"},
                 {web, kUTTypeFileURL, nullptr}};
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.type) + (c.expected ? c.expected : " error"));
        EXPECT_EQ(c.provider->hasItemConformingToTypeIdentifier(c.type), c.expected != nullptr);
        platform::LogCapture log;
        auto result = load(c.provider, c.type);
        std::lock_guard<std::mutex> lock(result->mutex);
        ASSERT_TRUE(result->done);
        EXPECT_FALSE(result->onMainThread);
        EXPECT_EQ(result->item ? result->item->absoluteString() : "", c.expected ? c.expected : "");
        EXPECT_EQ(result->error.has_value(), !c.expected);
        EXPECT_EQ(log.lines().empty(), c.expected != nullptr);
        if (result->error) {
            EXPECT_EQ(result->error->domain, NSItemProviderErrorDomain);
        }
    }
}

TEST(ItemProviderTest, ProvidersWithoutLoadersReportAnError) {
    auto text = ItemProvider::withTypes({"public.plain-text"});
    EXPECT_TRUE(text->hasItemConformingToTypeIdentifier("public.plain-text"));
    EXPECT_FALSE(text->hasItemConformingToTypeIdentifier(kUTTypeURL));
    auto result = load(text, "public.plain-text");
    EXPECT_TRUE(result->done && !result->item && result->error);

    // A registered loader that delivers nothing is not an error.
    auto empty = ItemProvider::withTypes({});
    empty->registerItemForTypeIdentifier(kUTTypeFileURL, [] { return std::optional<Url>(); });
    EXPECT_TRUE(empty->hasItemConformingToTypeIdentifier(kUTTypeURL));
    auto none = load(empty, kUTTypeFileURL);
    EXPECT_TRUE(none->done && !none->item && !none->error);
}

// Completions really overlap; work is counted until done, work a task posts to the main queue
// included.
TEST(WorkerPoolTest, ThousandTasksRunConcurrentlyAndAreCountedUntilDone) {
    std::atomic<int> finished{0}, running{0}, peak{0}, mainRuns{0};
    for (int i = 0; i < 1000; ++i) {
        WorkerPool::shared().async([&, i] {
            int now = ++running, seen = peak.load();
            while (now > seen && !peak.compare_exchange_weak(seen, now)) {
            }
            std::this_thread::sleep_for(200us);
            --running;
            ++finished;
            if (i % 50 == 0)
                MainQueue::after(20'000'000, [&] { ++mainRuns; });
        });
    }
    EXPECT_GT(EventLoop::pendingWork(), 0);
    ASSERT_TRUE(EventLoop::runUntilIdle(30s));
    EXPECT_EQ(finished, 1000);
    EXPECT_EQ(mainRuns, 20);
    EXPECT_EQ(EventLoop::pendingWork(), 0);
    EXPECT_GE(peak, 2);
}

TEST(ExtensionContextTest, FirstEndingCountsAndLaterOnesAreLogged) {
    ExtensionContext context({std::make_shared<ExtensionItem>()});
    EXPECT_EQ(context.state(), ExtensionContext::State::Pending);
    EXPECT_EQ(context.inputItems().size(), 1u);

    std::atomic<bool> handled{false}, handledOnMain{false};
    context.completeRequestReturningItems({}, [&](bool expired) {
        EXPECT_FALSE(expired);
        handledOnMain = MainQueue::isMainThread();
        handled = true;
    });
    EXPECT_TRUE(EventLoop::runUntil([&] { return handled.load(); }, 5s));
    EXPECT_TRUE(handledOnMain);

    platform::LogCapture log;
    context.cancelRequestWithError(
        Error::errorWithDomain(NSCocoaErrorDomain, NSUserCancelledError));
    context.completeRequestReturningItems({}, nullptr);
    EXPECT_EQ(context.state(), ExtensionContext::State::Completed);
    EXPECT_FALSE(context.cancellationError());
    EXPECT_EQ(context.endingCount(), 3);
    EXPECT_EQ(log.lines().size(), 2u);

    ExtensionContext cancelled({});
    cancelled.cancelRequestWithError(
        Error::errorWithDomain(NSCocoaErrorDomain, NSUserCancelledError));
    EXPECT_EQ(cancelled.state(), ExtensionContext::State::Cancelled);
    ASSERT_TRUE(cancelled.cancellationError());
    EXPECT_EQ(cancelled.cancellationError()->domain, "NSCocoaErrorDomain");
    EXPECT_EQ(cancelled.cancellationError()->code, 3072);
}
