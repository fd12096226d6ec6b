#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "platform/core/EventLoop.h"
#include "platform/core/ExtensionContext.h"
#include "platform/core/ItemProvider.h"
#include "platform/core/Log.h"
#include "platform/core/MainQueue.h"
#include "platform/core/WorkerPool.h"

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

TEST(ItemProviderTest, FileURLConformsToBothTypesAndLoadsOffTheMainThread) {
    auto provider = ItemProvider::withURL(Url::fileURLWithPath("/tmp/a.txt"));
    EXPECT_TRUE(provider->hasItemConformingToTypeIdentifier(kUTTypeFileURL));
    EXPECT_TRUE(provider->hasItemConformingToTypeIdentifier(kUTTypeURL));
    EXPECT_FALSE(provider->hasItemConformingToTypeIdentifier("public.plain-text"));

    for (const char* type : {kUTTypeFileURL, kUTTypeURL}) {
        auto result = load(provider, type);
        std::lock_guard<std::mutex> lock(result->mutex);
        ASSERT_TRUE(result->done);
        EXPECT_FALSE(result->onMainThread);
        ASSERT_TRUE(result->item);
        EXPECT_EQ(result->item->path(), "/tmp/a.txt");
        EXPECT_FALSE(result->error);
    }
}

TEST(ItemProviderTest, WebURLIsOnlyAURL) {
    auto provider = ItemProvider::withURL(*Url::URLWithString("https://parley.example/x"));
    EXPECT_TRUE(provider->hasItemConformingToTypeIdentifier(kUTTypeURL));
    EXPECT_FALSE(provider->hasItemConformingToTypeIdentifier(kUTTypeFileURL));
    auto url = load(provider, kUTTypeURL);
    ASSERT_TRUE(url->item);
    EXPECT_EQ(url->item->absoluteString(), "https://parley.example/x");

    platform::LogCapture log;
    auto file = load(provider, kUTTypeFileURL);
    ASSERT_TRUE(file->done);
    EXPECT_FALSE(file->item);
    ASSERT_TRUE(file->error);
    EXPECT_EQ(file->error->domain, NSItemProviderErrorDomain);
    EXPECT_FALSE(log.lines().empty());
}

TEST(ItemProviderTest, ProvidersWithoutLoadersReportAnError) {
    auto text = ItemProvider::withTypes({"public.plain-text"});
    EXPECT_TRUE(text->hasItemConformingToTypeIdentifier("public.plain-text"));
    EXPECT_FALSE(text->hasItemConformingToTypeIdentifier(kUTTypeURL));
    auto result = load(text, "public.plain-text");
    EXPECT_TRUE(result->done);
    EXPECT_FALSE(result->item);
    EXPECT_TRUE(result->error);

    // A registered loader that delivers nothing is not an error.
    auto empty = ItemProvider::withTypes({});
    empty->registerItemForTypeIdentifier(kUTTypeFileURL, [] { return std::optional<Url>(); });
    EXPECT_TRUE(empty->hasItemConformingToTypeIdentifier(kUTTypeURL));
    auto none = load(empty, kUTTypeFileURL);
    EXPECT_TRUE(none->done);
    EXPECT_FALSE(none->item);
    EXPECT_FALSE(none->error);
}

TEST(WorkerPoolTest, ThousandTasksRunConcurrentlyAndAreCountedUntilDone) {
    std::atomic<int> finished{0};
    std::atomic<int> running{0};
    std::atomic<int> peak{0};
    for (int i = 0; i < 1000; ++i) {
        WorkerPool::shared().async([&] {
            int now = ++running;
            int seen = peak.load();
            while (now > seen && !peak.compare_exchange_weak(seen, now)) {
            }
            std::this_thread::sleep_for(std::chrono::microseconds(200));
            --running;
            ++finished;
        });
    }
    EXPECT_GT(EventLoop::pendingWork(), 0);
    ASSERT_TRUE(EventLoop::runUntilIdle(30s));
    EXPECT_EQ(finished, 1000);
    EXPECT_EQ(EventLoop::pendingWork(), 0);
    EXPECT_GE(peak, 2);  // completions really overlap
}

TEST(WorkerPoolTest, TasksThatPostToTheMainQueueKeepTheLoopBusy) {
    std::atomic<int> mainRuns{0};
    for (int i = 0; i < 20; ++i)
        WorkerPool::shared().async([&] { MainQueue::after(20'000'000, [&] { ++mainRuns; }); });
    ASSERT_TRUE(EventLoop::runUntilIdle(10s));
    EXPECT_EQ(mainRuns, 20);
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
}

TEST(ExtensionContextTest, CancelRecordsTheError) {
    ExtensionContext context({});
    context.cancelRequestWithError(
        Error::errorWithDomain(NSCocoaErrorDomain, NSUserCancelledError));
    EXPECT_EQ(context.state(), ExtensionContext::State::Cancelled);
    ASSERT_TRUE(context.cancellationError());
    EXPECT_EQ(context.cancellationError()->domain, "NSCocoaErrorDomain");
    EXPECT_EQ(context.cancellationError()->code, 3072);
    EXPECT_EQ(context.endingCount(), 1);
}
