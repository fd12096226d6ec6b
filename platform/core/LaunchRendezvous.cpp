#include "platform/core/LaunchRendezvous.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QStringList>

#include "platform/core/EventLoop.h"
#include "platform/core/Log.h"
#include "platform/core/MainQueue.h"
#include "platform/core/SessionBus.h"

namespace platform {

namespace {

const Logger kLog("LaunchRendezvous: ");

// A gatherer that ends between our claim and our call leaves the name free: claim again, a few
// times at most.
constexpr int kAttempts = 3;

QDBusMessage busDriverCall(const char* method, const QString& name) {
    QDBusMessage call = QDBusMessage::createMethodCall(
        "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", method);
    call << name;
    return call;
}

}  // namespace

// Takes the operands other processes hand over while the window is open. Lives on the main
// thread, where QtDBus delivers the calls.
class RendezvousReceiver : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.parleyapp.LaunchRendezvous")

  public:
    std::vector<std::string> joined;
    bool open = true;

  public slots:
    bool Join(const QStringList& operands) {
        if (!open)
            return false;
        for (const QString& operand : operands)
            joined.push_back(operand.toStdString());
        return true;
    }
};

struct LaunchRendezvous::Gathering {
    explicit Gathering(QDBusConnection connection) : bus(std::move(connection)) {}
    QDBusConnection bus;
    RendezvousReceiver receiver;
};

LaunchRendezvous::LaunchRendezvous(const std::string& busName,
                                   std::vector<std::string> operands,
                                   std::chrono::milliseconds window)
    : busName_(busName), operands_(std::move(operands)) {
    MainQueue::assertMainThread("LaunchRendezvous");
    if (!SessionBus::isValidBusName(busName_)) {
        kLog.write("[" + busName_ + "] is not a valid bus name; nobody to meet.");
        return;
    }
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        if (gather(window))
            return;
        if (role_ != Role::Latecomer)
            return;  // no bus: alone
        switch (join()) {
            case JoinAnswer::Taken:
                role_ = Role::HandedOver;
                kLog.write("handed " + std::to_string(operands_.size()) +
                           " operands to the process gathering as [" + busName_ + "].");
                return;
            case JoinAnswer::Refused:
                return;
            case JoinAnswer::NoGatherer:
                continue;
        }
    }
    kLog.write("[" + busName_ + "] changed hands " + std::to_string(kAttempts) +
               " times; handling " + std::to_string(operands_.size()) + " operands alone.");
}

LaunchRendezvous::~LaunchRendezvous() {
    if (!gathering_)
        return;
    gathering_->bus.unregisterObject(kObjectPath);
    gathering_->bus.send(busDriverCall("ReleaseName", QString::fromStdString(busName_)));
}

// True when this process claimed the name and gathered. Otherwise role_ says why not: Latecomer
// when another process owns the name, Gatherer (alone) when there is no bus to meet on.
bool LaunchRendezvous::gather(std::chrono::milliseconds window) {
    role_ = Role::Gatherer;
    auto bus = SessionBus::connection("meeting as [" + busName_ + "]");
    if (!bus)
        return false;
    auto gathering = std::make_unique<Gathering>(*bus);
    // Ready before the name is ours: a call may come the moment it is.
    if (!gathering->bus.registerObject(kObjectPath, &gathering->receiver,
                                       QDBusConnection::ExportAllSlots)) {
        kLog.write("cannot offer " + std::string(kObjectPath) + " on the bus; alone.");
        return false;
    }
    constexpr uint kDoNotQueue = 4;
    constexpr uint kPrimaryOwner = 1, kAlreadyOwner = 4;
    QDBusMessage call = busDriverCall("RequestName", QString::fromStdString(busName_));
    call << kDoNotQueue;
    const QDBusMessage reply =
        gathering->bus.call(call, QDBus::Block, 4 * SessionBus::kTimeoutMilliseconds);
    const bool answered =
        reply.type() == QDBusMessage::ReplyMessage && !reply.arguments().isEmpty();
    const uint result = answered ? reply.arguments().first().toUInt() : 0;
    if (result != kPrimaryOwner && result != kAlreadyOwner) {
        gathering->bus.unregisterObject(kObjectPath);
        if (!answered) {
            kLog.write("cannot claim [" + busName_ + "]: " + reply.errorMessage().toStdString() +
                       "; alone.");
            return false;
        }
        role_ = Role::Latecomer;
        return false;
    }
    EventLoop::runUntil([] { return false; }, window);
    gathering->receiver.open = false;
    const std::vector<std::string>& joined = gathering->receiver.joined;
    if (!joined.empty())
        kLog.write("took " + std::to_string(joined.size()) + " operands from other processes.");
    operands_.insert(operands_.end(), joined.begin(), joined.end());
    gathering_ = std::move(gathering);
    return true;
}

LaunchRendezvous::JoinAnswer LaunchRendezvous::join() const {
    auto bus = SessionBus::connection("joining [" + busName_ + "]");
    if (!bus)
        return JoinAnswer::Refused;
    QStringList operands;
    for (const std::string& operand : operands_)
        operands << QString::fromStdString(operand);
    QDBusMessage call = QDBusMessage::createMethodCall(QString::fromStdString(busName_),
                                                       kObjectPath, kInterface, "Join");
    call << operands;
    const QDBusMessage reply = bus->call(call, QDBus::Block, int(kJoinTimeout.count()));
    if (reply.type() == QDBusMessage::ErrorMessage &&
        reply.errorName() == "org.freedesktop.DBus.Error.ServiceUnknown")
        return JoinAnswer::NoGatherer;
    if (reply.type() == QDBusMessage::ReplyMessage && reply.arguments().size() == 1 &&
        reply.arguments().first().metaType() == QMetaType(QMetaType::Bool)) {
        if (reply.arguments().first().toBool())
            return JoinAnswer::Taken;
        kLog.write("[" + busName_ + "] no longer gathers; handling " +
                   std::to_string(operands_.size()) + " operands alone.");
        return JoinAnswer::Refused;
    }
    kLog.write("[" + busName_ + "] does not take operands (" +
               (reply.type() == QDBusMessage::ErrorMessage ? reply.errorMessage().toStdString()
                                                           : std::string("no answer")) +
               "); handling " + std::to_string(operands_.size()) + " operands alone.");
    return JoinAnswer::Refused;
}

}  // namespace platform

#include "LaunchRendezvous.moc"
