#include "platform/core/DistributedNotificationCenter.h"

#include <QCoreApplication>
#include <QDBusError>
#include <QDBusMessage>
#include <QObject>
#include <QThread>
#include <algorithm>

#include "platform/core/Log.h"
#include "platform/core/MainQueue.h"
#include "platform/core/SessionBus.h"

namespace platform {

namespace {

const Logger kLog("DistributedNotificationCenter: ");

const char* const kPath = "/org/parleyapp/DistributedNotification";
const char* const kInterface = "org.parleyapp.DistributedNotification";

// A bus round trip: messages on one connection are ordered, so once the bus has answered, what
// was sent before has reached it.
bool roundTrip(const QDBusConnection& bus,
               std::chrono::milliseconds timeout = SessionBus::kTimeout) {
    QDBusMessage call = QDBusMessage::createMethodCall(
        "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "GetId");
    return bus.call(call, QDBus::Block, static_cast<int>(timeout.count())).type() ==
           QDBusMessage::ReplyMessage;
}

}  // namespace

// Receives the bus signal; lives on the main thread, so QtDBus queues delivery there.
class NotificationReceiver : public QObject {
    Q_OBJECT
  public:
    explicit NotificationReceiver(std::function<void()> handler) : handler_(std::move(handler)) {}

  public slots:
    void onNotification() {
        if (handler_)
            handler_();
    }

  private:
    std::function<void()> handler_;
};

namespace {

class BusObserver : public DistributedNotificationCenter::Observer {
  public:
    BusObserver(QDBusConnection bus, QString name, NotificationReceiver* receiver)
        : bus_(std::move(bus)), name_(std::move(name)), receiver_(receiver) {}
    ~BusObserver() override {
        bus_.disconnect(QString(), kPath, kInterface, name_, receiver_, SLOT(onNotification()));
        if (MainQueue::isMainThread())
            delete receiver_;
        else
            receiver_->deleteLater();
    }

  private:
    QDBusConnection bus_;
    QString name_;
    NotificationReceiver* receiver_;
};

}  // namespace

DistributedNotificationCenter& DistributedNotificationCenter::defaultCenter() {
    static DistributedNotificationCenter center;
    return center;
}

bool DistributedNotificationCenter::postNotificationName(const std::string& name,
                                                         const std::string* /*object*/,
                                                         const void* /*userInfo*/,
                                                         bool /*deliverImmediately*/,
                                                         std::chrono::milliseconds timeout) {
    if (!SessionBus::isValidMemberName(name)) {
        kLog.write("[" + name + "] is not a valid notification name; not posted.");
        return false;
    }
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    auto bus = SessionBus::connection("posting [" + name + "]", timeout);
    if (!bus)
        return false;
    QDBusMessage signal =
        QDBusMessage::createSignal(kPath, kInterface, QString::fromStdString(name));
    if (!bus->send(signal)) {
        kLog.write("cannot post [" + name + "]: " + bus->lastError().message().toStdString());
        return false;
    }
    // Delivered immediately: do not return while the signal may still sit in our queue (the
    // caller may exit right after).
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    if (!roundTrip(*bus, std::max(left, std::chrono::milliseconds(1))))
        kLog.write("[" + name + "] queued, but the bus did not confirm in time.");
    return true;
}

bool DistributedNotificationCenter::connect(std::chrono::milliseconds timeout) {
    return SessionBus::connection("notifications", timeout).has_value();
}

std::unique_ptr<DistributedNotificationCenter::Observer>
DistributedNotificationCenter::addObserverForName(const std::string& name,
                                                  std::function<void()> handler) {
    if (!SessionBus::isValidMemberName(name)) {
        kLog.write("[" + name + "] is not a valid notification name; not observed.");
        return nullptr;
    }
    auto bus = SessionBus::connection("observing [" + name + "]");
    if (!bus)
        return nullptr;
    auto* receiver = new NotificationReceiver(std::move(handler));
    if (QThread::currentThread() != QCoreApplication::instance()->thread())
        receiver->moveToThread(QCoreApplication::instance()->thread());
    QString member = QString::fromStdString(name);
    if (!bus->connect(QString(), kPath, kInterface, member, receiver, SLOT(onNotification()))) {
        kLog.write("cannot observe [" + name + "]: " + bus->lastError().message().toStdString());
        delete receiver;
        return nullptr;
    }
    // The match rule is in place once the bus has answered a later call.
    roundTrip(*bus);
    return std::make_unique<BusObserver>(*bus, member, receiver);
}

}  // namespace platform

#include "DistributedNotificationCenter.moc"
