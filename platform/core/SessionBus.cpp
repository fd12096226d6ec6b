#include "platform/core/SessionBus.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QDBusError>
#include <atomic>
#include <cctype>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <vector>

#include "platform/core/Log.h"

namespace platform {

namespace {

const Logger kLog("SessionBus: ");

using Clock = std::chrono::steady_clock;

// After a failed probe the same address is not probed again for this long, so that many
// threads asking at once do not queue up one timeout after another.
constexpr auto kFailureMemory = std::chrono::seconds(1);

struct Cache {
    std::mutex mutex;
    std::string address;  // the address the connection (or the failure) belongs to
    std::optional<QDBusConnection> connection;
    std::string connectionName;
    Clock::time_point failedAt{};
    std::chrono::milliseconds failedTimeout{0};
    bool failed = false;
};

Cache& cache() {
    static Cache* instance = new Cache;  // used by worker threads up to process exit
    return *instance;
}

std::string unescapeAddressValue(const std::string& text) {
    std::string out;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size()) {
            out += static_cast<char>(std::strtol(text.substr(i + 1, 2).c_str(), nullptr, 16));
            i += 2;
        } else {
            out += text[i];
        }
    }
    return out;
}

// One entry of a bus address that we can probe: a unix socket by path or abstract name.
struct Endpoint {
    std::string entry;  // the address text of this entry alone, for QtDBus
    std::string path;
    bool abstract = false;
};

std::vector<Endpoint> endpointsOf(const std::string& address) {
    std::vector<Endpoint> endpoints;
    size_t start = 0;
    while (start < address.size()) {
        size_t end = address.find(';', start);
        if (end == std::string::npos)
            end = address.size();
        std::string entry = address.substr(start, end - start);
        start = end + 1;
        if (entry.rfind("unix:", 0) != 0)
            continue;
        Endpoint endpoint;
        endpoint.entry = entry;
        std::string params = entry.substr(5);
        size_t p = 0;
        while (p <= params.size()) {
            size_t q = params.find(',', p);
            if (q == std::string::npos)
                q = params.size();
            std::string pair = params.substr(p, q - p);
            p = q + 1;
            size_t eq = pair.find('=');
            if (eq == std::string::npos)
                continue;
            std::string key = pair.substr(0, eq), value = unescapeAddressValue(pair.substr(eq + 1));
            if (key == "path")
                endpoint.path = value;
            if (key == "abstract") {
                endpoint.path = value;
                endpoint.abstract = true;
            }
        }
        if (!endpoint.path.empty())
            endpoints.push_back(endpoint);
    }
    return endpoints;
}

std::string sessionBusAddress() {
    const char* address = std::getenv("DBUS_SESSION_BUS_ADDRESS");
    if (address && *address)
        return address;
    // libdbus's own default when the variable is unset.
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");
    if (runtime && *runtime) {
        std::string path = std::string(runtime) + "/bus";
        struct stat st {};
        if (::stat(path.c_str(), &st) == 0 && S_ISSOCK(st.st_mode))
            return "unix:path=" + path;
    }
    return "";
}

int remainingMs(Clock::time_point deadline) {
    auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
    return left.count() > 0 ? static_cast<int>(left.count()) : 0;
}

bool waitFor(int fd, short events, Clock::time_point deadline) {
    for (;;) {
        struct pollfd p = {fd, events, 0};
        int n = ::poll(&p, 1, remainingMs(deadline));
        if (n < 0 && errno == EINTR)
            continue;
        return n > 0 && (p.revents & events);
    }
}

// The bus driver's "Hello" call (little-endian, serial 1): the first call of every connection.
std::string helloMessage() {
    std::string message("l\x01\x00\x01", 4);
    auto put32 = [&message](uint32_t value) {
        for (int i = 0; i < 4; ++i)
            message += static_cast<char>((value >> (8 * i)) & 0xff);
    };
    auto pad = [&message](size_t to) { message.resize((message.size() + to - 1) / to * to, '\0'); };
    put32(0);  // no body
    put32(1);  // serial
    std::string fields;
    auto field = [&fields](char code, char type, const std::string& value) {
        fields.resize((fields.size() + 7) / 8 * 8, '\0');  // each field is a struct: 8-aligned
        fields += code;
        fields += std::string("\x01", 1) + type + std::string(1, '\0');
        const auto length = static_cast<uint32_t>(value.size());
        for (int i = 0; i < 4; ++i)
            fields += static_cast<char>((length >> (8 * i)) & 0xff);
        fields += value + std::string(1, '\0');
    };
    field(1, 'o', "/org/freedesktop/DBus");
    field(6, 's', "org.freedesktop.DBus");
    field(2, 's', "org.freedesktop.DBus");
    field(3, 's', "Hello");
    put32(static_cast<uint32_t>(fields.size()));
    pad(8);
    message += fields;
    pad(8);
    return message;
}

bool sendAll(int fd, const std::string& bytes, Clock::time_point deadline, std::string& reason) {
    size_t sent = 0;
    while (sent < bytes.size()) {
        ssize_t n = ::send(fd, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (n > 0) {
            sent += static_cast<size_t>(n);
        } else if (n < 0 && (errno == EAGAIN || errno == EINTR)) {
            if (!waitFor(fd, POLLOUT, deadline)) {
                reason = "the bus does not read";
                return false;
            }
        } else {
            reason = std::strerror(errno);
            return false;
        }
    }
    return true;
}

// Reads until |complete| holds for what arrived; false at the deadline or when the bus closes.
template <typename Complete>
bool receiveUntil(int fd,
                  std::string& answer,
                  Complete complete,
                  Clock::time_point deadline,
                  std::string& reason) {
    while (!complete(answer)) {
        if (answer.size() > 4096 || !waitFor(fd, POLLIN, deadline)) {
            reason = "the bus does not answer";
            return false;
        }
        char buffer[256];
        ssize_t n = ::recv(fd, buffer, sizeof buffer, 0);
        if (n > 0) {
            answer.append(buffer, static_cast<size_t>(n));
        } else if (!(n < 0 && (errno == EAGAIN || errno == EINTR))) {
            reason = n == 0 ? "the bus closed the connection" : std::strerror(errno);
            return false;
        }
    }
    return true;
}

// Connects to |endpoint|, authenticates and says "Hello": a bus that answers the call is alive.
// (A bus may accept and authenticate and then never answer; QtDBus would wait libdbus's 25 s
// for that answer.) Never waits past |deadline|.
bool probe(const Endpoint& endpoint, Clock::time_point deadline, std::string& reason) {
    int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (fd < 0) {
        reason = std::strerror(errno);
        return false;
    }
    struct sockaddr_un addr {};
    addr.sun_family = AF_UNIX;
    size_t offset = endpoint.abstract ? 1 : 0;
    if (endpoint.path.size() + offset >= sizeof addr.sun_path) {
        ::close(fd);
        reason = "socket path too long";
        return false;
    }
    std::memcpy(addr.sun_path + offset, endpoint.path.data(), endpoint.path.size());
    socklen_t length = static_cast<socklen_t>(offsetof(struct sockaddr_un, sun_path) + offset +
                                              endpoint.path.size() + (endpoint.abstract ? 0 : 1));
    bool ok = true;
    if (::connect(fd, reinterpret_cast<struct sockaddr*>(&addr), length) != 0) {
        if (errno == EINPROGRESS || errno == EAGAIN) {
            int soError = 0;
            socklen_t soLength = sizeof soError;
            ok = waitFor(fd, POLLOUT, deadline) &&
                 ::getsockopt(fd, SOL_SOCKET, SO_ERROR, &soError, &soLength) == 0 && soError == 0;
            reason = ok ? "" : (soError ? std::strerror(soError) : "connect timed out");
        } else {
            ok = false;
            reason = std::strerror(errno);
        }
    }
    if (ok) {
        std::string uid = std::to_string(getuid()), hex;
        static const char* digits = "0123456789abcdef";
        for (unsigned char c : uid) {
            hex += digits[c >> 4];
            hex += digits[c & 15];
        }
        std::string answer;
        ok =
            sendAll(fd, std::string(1, '\0') + "AUTH EXTERNAL " + hex + "\r\n", deadline, reason) &&
            receiveUntil(
                fd, answer,
                [](const std::string& a) { return a.find("\r\n") != std::string::npos; }, deadline,
                reason);
        if (ok && answer.rfind("OK", 0) != 0) {
            ok = false;
            reason = "the bus refused authentication";
        }
        answer.clear();
        // A reply (method return or error) is the message type byte 2 or 3 of the first message.
        ok = ok && sendAll(fd, "BEGIN\r\n" + helloMessage(), deadline, reason) &&
             receiveUntil(
                 fd, answer, [](const std::string& a) { return a.size() >= 16; }, deadline, reason);
        if (ok && answer[1] != 2 && answer[1] != 3) {
            ok = false;
            reason = "the bus answered \"Hello\" with something else";
        }
    }
    ::close(fd);
    return ok;
}

}  // namespace

std::optional<QDBusConnection> SessionBus::connection(const std::string& purpose,
                                                      std::chrono::milliseconds timeout) {
    Cache& c = cache();
    std::lock_guard<std::mutex> lock(c.mutex);
    std::string address = sessionBusAddress();
    if (address.empty()) {
        kLog.write("no session bus for " + purpose + " (DBUS_SESSION_BUS_ADDRESS unset).");
        return std::nullopt;
    }
    if (c.address == address) {
        if (c.connection && c.connection->isConnected())
            return c.connection;
        if (c.failed && Clock::now() - c.failedAt < kFailureMemory && timeout <= c.failedTimeout) {
            kLog.write("session bus unreachable for " + purpose + ".");
            return std::nullopt;
        }
    }
    // A new address, a dropped connection, or time to try again.
    if (c.connection) {
        QDBusConnection::disconnectFromBus(QString::fromStdString(c.connectionName));
        c.connection.reset();
    }
    c.address = address;
    c.failed = true;
    c.failedAt = Clock::now();
    c.failedTimeout = timeout;

    if (!QCoreApplication::instance()) {
        kLog.write("no application object; the bus is not used for " + purpose + ".");
        return std::nullopt;
    }
    auto deadline = Clock::now() + timeout;
    std::string reason = "no usable unix socket in the address";
    const Endpoint* alive = nullptr;
    auto endpoints = endpointsOf(address);
    for (const auto& endpoint : endpoints) {
        if (probe(endpoint, deadline, reason)) {
            alive = &endpoint;
            break;
        }
    }
    if (!alive) {
        kLog.write("session bus [" + address + "] unreachable for " + purpose + ": " + reason +
                   ".");
        return std::nullopt;
    }

    static std::atomic<int> counter{0};
    std::string name = "parley-session-bus-" + std::to_string(counter++);
    QDBusConnection bus = QDBusConnection::connectToBus(QString::fromStdString(alive->entry),
                                                        QString::fromStdString(name));
    if (!bus.isConnected()) {
        kLog.write("cannot connect to [" + address + "] for " + purpose + ": " +
                   bus.lastError().message().toStdString());
        QDBusConnection::disconnectFromBus(QString::fromStdString(name));
        return std::nullopt;
    }
    c.connection = bus;
    c.connectionName = name;
    c.failed = false;
    return bus;
}

bool SessionBus::isValidMemberName(const std::string& name) {
    if (name.empty() || name.size() > 255)
        return false;
    if (name[0] >= '0' && name[0] <= '9')
        return false;
    for (unsigned char c : name)
        if (!(std::isalnum(c) && c < 0x80) && c != '_')
            return false;
    return true;
}

bool SessionBus::isValidBusName(const std::string& name) {
    if (name.empty() || name.size() > 255 || name[0] == '.' || name[0] == ':')
        return false;
    int elements = 0;
    size_t start = 0;
    while (start <= name.size()) {
        size_t end = name.find('.', start);
        if (end == std::string::npos)
            end = name.size();
        std::string element = name.substr(start, end - start);
        if (element.empty() || (element[0] >= '0' && element[0] <= '9'))
            return false;
        for (unsigned char c : element)
            if (!(std::isalnum(c) && c < 0x80) && c != '_' && c != '-')
                return false;
        ++elements;
        start = end + 1;
    }
    return elements >= 2;
}

}  // namespace platform
