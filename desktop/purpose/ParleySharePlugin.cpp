// "Share to Parley" in the Share menus of KDE applications (Dolphin, Okular, Gwenview, Spectacle,
// Falkon...). The job runs parley-share with what was shared, files as operands or a web link as
// --url, and ends when parley-share does: its sheet was clicked (done), cancelled (KJob's killed
// error, which Purpose shows as nothing) or could not take the share (an error with a readable
// text). As KDE's own Purpose plugins, the plugin and its job are one file: the factory macro and
// the moc file belong to it.
//
// PARLEY_SHARE_EXECUTABLE, when set, names the parley-share to run (a build tree's, for tests);
// otherwise the one on the PATH, which the plugin's "exec:parley-share" constraint requires.
#include <purpose/pluginbase.h>
#include <KPluginFactory>
#include <QJsonArray>
#include <QProcess>
#include <QTimer>
#include <QUrl>

namespace {

// parley-share's exit statuses.
constexpr int kExitCompleted = 0;
constexpr int kExitCancelled = 2;

QString programToRun() {
    const QString chosen = qEnvironmentVariable("PARLEY_SHARE_EXECUTABLE");
    return chosen.isEmpty() ? QStringLiteral("parley-share") : chosen;
}

// parley-share's arguments for |urls|: local files as operands, a single web link as --url.
// Empty for anything else (a remote file, a link among files), which parley-share cannot share.
QStringList argumentsFor(const QJsonArray& urls) {
    const QUrl first(urls.first().toString());
    if (urls.size() == 1 &&
        (first.scheme() == QLatin1String("http") || first.scheme() == QLatin1String("https")))
        return {QStringLiteral("--url"), first.toString(QUrl::FullyEncoded)};
    QStringList arguments{QStringLiteral("--")};
    for (const QJsonValue& value : urls) {
        const QUrl url(value.toString());
        if (!url.isLocalFile())
            return {};
        arguments << url.toLocalFile();
    }
    return arguments;
}

// The last line parley-share wrote about itself ("parley-share: ..."), else what its status
// means.
QString failureText(const QByteArray& standardError, int status) {
    const QList<QByteArray> lines = standardError.split('\n');
    for (auto line = lines.crbegin(); line != lines.crend(); ++line)
        if (line->startsWith("parley-share: "))
            return QString::fromUtf8(*line);
    switch (status) {
        case 1:
            return QStringLiteral("Parley could not take the share.");
        case 64:
            return QStringLiteral("parley-share did not accept what was shared.");
        default:
            return QStringLiteral("parley-share ended with status %1.").arg(status);
    }
}

}  // namespace

class ParleyShareJob : public Purpose::Job {
    Q_OBJECT

  public:
    explicit ParleyShareJob(QObject* parent) : Purpose::Job(parent) { setCapabilities(Killable); }

    void start() override { QTimer::singleShot(0, this, &ParleyShareJob::run); }

  protected:
    bool doKill() override {
        // KJob reports the kill itself.
        disconnect(&process_, nullptr, this, nullptr);
        process_.terminate();
        return process_.waitForFinished(5000);
    }

  private:
    void run() {
        const QJsonArray urls = data().value(QStringLiteral("urls")).toArray();
        const QStringList arguments = argumentsFor(urls);
        if (arguments.isEmpty()) {
            setError(UserDefinedError);
            setErrorText(QStringLiteral("Parley takes local files or one web link, not %1.")
                             .arg(QVariant(urls.toVariantList()).toStringList().join(", ")));
            emitResult();
            return;
        }
        connect(&process_, qOverload<int, QProcess::ExitStatus>(&QProcess::finished), this,
                &ParleyShareJob::processEnded);
        connect(&process_, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
            if (error != QProcess::FailedToStart)
                return;
            setError(UserDefinedError);
            setErrorText(QStringLiteral("Cannot run %1: %2")
                             .arg(process_.program(), process_.errorString()));
            emitResult();
        });
        process_.start(programToRun(), arguments);
    }

    void processEnded(int status, QProcess::ExitStatus how) {
        if (how == QProcess::CrashExit) {
            setError(UserDefinedError);
            setErrorText(QStringLiteral("parley-share stopped unexpectedly."));
        } else if (status == kExitCancelled) {
            setError(KilledJobError);
        } else if (status != kExitCompleted) {
            setError(UserDefinedError);
            setErrorText(failureText(process_.readAllStandardError(), status));
        }
        emitResult();
    }

    QProcess process_;
};

class ParleySharePlugin : public Purpose::PluginBase {
    Q_OBJECT

  public:
    ParleySharePlugin(QObject* parent, const QVariantList&) : Purpose::PluginBase(parent) {}
    Purpose::Job* createJob() const override { return new ParleyShareJob(nullptr); }
};

K_PLUGIN_CLASS_WITH_JSON(ParleySharePlugin, "parleyshareplugin.json")

#include "ParleySharePlugin.moc"
