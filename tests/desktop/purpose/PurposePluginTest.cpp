// KDE's Share menus through Purpose's own model and jobs, with the plugin installed into a
// temporary prefix: it is offered for a photo, several files, a PDF and a link, named in every
// shipped language, and not offered without parley-share. Its job runs as a Share menu runs it,
// in Purpose's helper process, and ends when parley-share does: on the X display a click on a row
// hands the files to the host and Cancel ends the job as killed; what cannot be shared ends it
// with a readable error.
#include <gtest/gtest.h>

#include <purpose/alternativesmodel.h>
#include <purpose/configuration.h>
#include <purpose/job.h>
#include <KJob>
#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QJsonArray>
#include <QLocale>
#include <QProcess>
#include <QTemporaryDir>
#include <QTimer>
#include <optional>

namespace {

QString gRoot;  // HOME, the XDG folders and the prefix live here

QString file(const QString& name) {
    return gRoot + "/" + name;
}

QString readAll(const QString& path) {
    QFile in(path);
    return in.open(QIODevice::ReadOnly) ? QString::fromUtf8(in.readAll()) : QString();
}

QString writeText(const QString& name, const QString& text) {
    QFile out(file(name));
    out.open(QIODevice::WriteOnly);
    out.write(text.toUtf8());
    out.setPermissions(out.permissions() | QFile::ExeOwner);
    return out.fileName();
}

QJsonObject files(const QStringList& paths, const QString& mimeType) {
    QJsonArray urls;
    for (const QString& path : paths)
        urls << QUrl::fromLocalFile(path).toString();
    return {{"urls", urls}, {"mimeType", mimeType}};
}

QJsonObject link(const QString& url) {
    return {{"urls", QJsonArray{url}}, {"title", "A page"}};
}

// Parley's row in Purpose's model for |type| and |input|; -1 when it is not offered.
int parleyRow(Purpose::AlternativesModel& model, const QString& type, const QJsonObject& input) {
    model.setInputData(input);
    model.setPluginType(type);
    for (int row = 0; row < model.rowCount(); ++row)
        if (model.index(row).data(Purpose::AlternativesModel::PluginIdRole) == "parleyshareplugin")
            return row;
    return -1;
}

struct Ended {
    int error;
    QString text;
};

// Runs Parley's job for |input| while |person| (a shell command) acts on the display. Nothing
// when Parley is not offered or the job has not ended within a minute.
std::optional<Ended> share(const QString& type,
                           const QJsonObject& input,
                           const QString& person = {}) {
    Purpose::AlternativesModel model;
    const int row = parleyRow(model, type, input);
    if (row < 0)
        return std::nullopt;
    Purpose::Job* job = model.configureJob(row)->createJob();
    std::optional<Ended> ended;
    QEventLoop loop;
    QObject::connect(job, &KJob::result, [&](KJob* done) {
        ended = Ended{done->error(), done->errorText()};
        loop.quit();
    });
    QTimer::singleShot(60000, &loop, &QEventLoop::quit);
    QProcess actor;
    if (!person.isEmpty())
        actor.start("sh", {"-c", person});
    job->start();
    loop.exec();
    actor.waitForFinished();
    return ended;
}

// Clicks the sheet at |x|, |y| from its top-left corner, as X counts.
QString clickOnSheet(int x, int y) {
    return QString(
               "w=$(timeout 30 xdotool search --sync --onlyvisible --name '^Parley$' | "
               "head -n 1); xdotool mousemove --window \"$w\" %1 %2 click 1")
        .arg(x)
        .arg(y);
}

TEST(PurposePluginTest, OfferedForFilesAndLinksInEveryShippedLanguage) {
    const struct {
        const char* type;
        QJsonObject input;
        const char* locale;
        const char* action;
    } kCases[] = {
        {"Export", files({"/p/holiday.jpg"}, "image/jpeg"), "en_US", "Share to Parley"},
        {"Export", files({"/p/a.txt", "/p/b.ods"}, "application/octet-stream"), "de_DE",
         "Mit Parley teilen"},
        {"Export", files({"/p/plan.pdf"}, "application/pdf"), "fr_FR", "Partager avec Parley"},
        {"ShareUrl", link("https://example.org/"), "es_ES", "Compartir con Parley"},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.locale);
        QLocale::setDefault(QLocale(c.locale));
        Purpose::AlternativesModel model;
        const int row = parleyRow(model, c.type, c.input);
        ASSERT_GE(row, 0) << c.type;
        EXPECT_EQ(model.index(row).data(Purpose::AlternativesModel::ActionDisplayRole), c.action);
        EXPECT_EQ(model.index(row).data(Purpose::AlternativesModel::IconNameRole), "parley-share");
    }
    QLocale::setDefault(QLocale::c());
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", "/usr/bin:/bin");
    Purpose::AlternativesModel model;
    EXPECT_EQ(parleyRow(model, "Export", files({"/p/a.txt"}, "text/plain")), -1);
    qputenv("PATH", path);
}

TEST(PurposePluginTest, TheJobEndsWhenTheSheetCloses) {
    const QString holiday = writeText("holiday.jpg", "j"), notes = writeText("notes 1.txt", "n");
    const auto favourite = share("Export", files({holiday, notes}, "application/octet-stream"),
                                 clickOnSheet(57 + 75, 370 - (79 + 18 + 7)));
    ASSERT_TRUE(favourite);
    EXPECT_EQ(favourite->error, 0) << favourite->text.toStdString();
    // The host, launched by the share, writes the record it finds when it starts.
    QEventLoop wait;
    for (int i = 0; i < 300 && readAll(file("records.jsonl")).isEmpty(); ++i)
        wait.processEvents(QEventLoop::WaitForMoreEvents, 100);
    const QString record = readAll(file("records.jsonl"));
    const QString container = file("data/group-containers/P4RL3YSH4R.com.parleyapp.Parley/");
    EXPECT_TRUE(
        record.startsWith("{\"event\":\"start\",\"type\":\"public.file-url\","
                          "\"entry\":\"favToParley\""))
        << record.toStdString();
    for (const QString name : {"holiday.jpg", "notes 1.txt"})
        EXPECT_TRUE(record.contains("\"" + container + name + "\"")) << name.toStdString();

    const auto cancelled =
        share("ShareUrl", link("https://example.org/"), clickOnSheet(276 + 35, 370 - (28 + 11)));
    ASSERT_TRUE(cancelled);
    EXPECT_EQ(cancelled->error, KJob::KilledJobError);
}

// What parley-share is given and how its end becomes the job's: a stand-in records its arguments
// and ends as told.
TEST(PurposePluginTest, ArgumentsAndEndings) {
    const struct {
        QJsonObject input;
        const char* end;
        const char* arguments;
        int error;
        const char* text;
    } kCases[] = {
        {files({"/p/a b.txt", "/p/-c.pdf"}, "application/pdf"), "exit 0",
         "--\n/p/a b.txt\n/p/-c.pdf\n", 0, ""},
        {link("https://example.org/a%20b?c=d"), "exit 2", "--url\nhttps://example.org/a%20b?c=d\n",
         KJob::KilledJobError, ""},
        {files({"/p/a.txt"}, "text/plain"),
         "echo 'parley-share: the disk is full' >&2; echo '  --help  show this text' >&2; exit 1",
         "--\n/p/a.txt\n", KJob::UserDefinedError, "parley-share: the disk is full"},
        {files({"/p/a.txt"}, "text/plain"), "exit 64", "--\n/p/a.txt\n", KJob::UserDefinedError,
         "parley-share did not accept what was shared."},
        {files({"/p/a.txt"}, "text/plain"), "kill -SEGV $$", "--\n/p/a.txt\n",
         KJob::UserDefinedError, "parley-share stopped unexpectedly."},
        {{{"urls", QJsonArray{"sftp://host/x.jpg"}}, {"mimeType", "image/jpeg"}},
         "exit 0",
         "",
         KJob::UserDefinedError,
         "Parley takes local files or one web link, not sftp://host/x.jpg."},
    };
    const QString arguments = file("arguments");
    qputenv("PARLEY_SHARE_EXECUTABLE",
            writeText("stand-in", "#!/bin/sh\nprintf '%s\\n' \"$@\" >" + arguments + "\n" +
                                      "eval \"$PARLEY_TEST_END\"\n")
                .toUtf8());
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.end);
        QFile::remove(arguments);
        qputenv("PARLEY_TEST_END", c.end);
        const auto ended = share(c.input.contains("title") ? "ShareUrl" : "Export", c.input);
        ASSERT_TRUE(ended);
        EXPECT_EQ(readAll(arguments), c.arguments);
        EXPECT_EQ(ended->error, c.error);
        EXPECT_EQ(ended->text, c.text);
    }
    qputenv("PARLEY_SHARE_EXECUTABLE", "/nonexistent/parley-share");
    const auto missing = share("Export", files({"/p/a.txt"}, "text/plain"));
    ASSERT_TRUE(missing);
    EXPECT_TRUE(missing->text.startsWith("Cannot run /nonexistent/parley-share: "))
        << missing->text.toStdString();
    qunsetenv("PARLEY_SHARE_EXECUTABLE");
}

}  // namespace

// Everything the programs write goes under a temporary root; the tree is installed there and its
// bin and Qt 5 plugin folders come first.
int main(int argc, char** argv) {
    QTemporaryDir root;
    gRoot = root.path();
    for (const char* entry : {"home:HOME", "config:XDG_CONFIG_HOME", "data:XDG_DATA_HOME",
                              "cache:XDG_CACHE_HOME", "runtime:XDG_RUNTIME_DIR"}) {
        const QStringList parts = QString(entry).split(':');
        QDir().mkpath(file(parts[0]));
        qputenv(parts[1].toUtf8(), file(parts[0]).toUtf8());
    }
    QFile::setPermissions(file("runtime"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    const QString prefix = file("prefix");
    QProcess install;
    install.setStandardOutputFile(QProcess::nullDevice());
    install.start("cmake", {"--install", PARLEY_BUILD_DIR, "--prefix", prefix});
    if (!install.waitForFinished(120000) || install.exitCode() != 0)
        return 70;
    qputenv("PATH", (prefix + "/bin:").toUtf8() + qgetenv("PATH"));
    qputenv("QT_PLUGIN_PATH", (prefix + "/" PARLEY_QT5_PLUGIN_DIR).toUtf8());
    qputenv("PARLEY_HOST_ONCE", "1");
    qputenv("PARLEY_HOST_RECORD_FILE", file("records.jsonl").toUtf8());
    qunsetenv("PARLEY_APPLICATIONS_DIR");
    qunsetenv("QT_QPA_PLATFORM");
    QCoreApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
