// KDE's Share menus through Purpose's own model and jobs, with the tree installed into a
// temporary prefix: Parley is offered for a photo, several files, a PDF and a link, named in every
// shipped language, and not without parley-share. Its job runs as a Share menu runs it (in
// Purpose's helper process) and ends when parley-share does.
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

// Failures print texts as text.
void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

namespace {

QString gRoot;  // HOME, the XDG folders, the prefix and the host's records

QString readAll(const QString& path) {
    QFile in(path);
    return in.open(QIODevice::ReadOnly) ? QString::fromUtf8(in.readAll()) : QString();
}

QJsonObject input(const QStringList& urls, const char* key, const char* value) {
    return {{"urls", QJsonArray::fromStringList(urls)}, {key, value}};
}

// Parley's row in |model| for |input| ("title" marks a link); invalid when not offered.
QModelIndex parley(Purpose::AlternativesModel& model, const QJsonObject& input) {
    model.setInputData(input);
    model.setPluginType(input.contains("title") ? "ShareUrl" : "Export");
    for (int row = 0; row < model.rowCount(); ++row)
        if (model.index(row).data(Purpose::AlternativesModel::PluginIdRole) == "parleyshareplugin")
            return model.index(row);
    return {};
}

// Runs Parley's job for |input| while the shell command |person| acts on the display: the job's
// error and text; -1 when Parley is not offered or the job has not ended within a minute.
std::pair<int, QString> share(const QJsonObject& input, const QString& person = {}) {
    Purpose::AlternativesModel model;
    const QModelIndex row = parley(model, input);
    if (!row.isValid())
        return {-1, "not offered"};
    Purpose::Job* job = model.configureJob(row.row())->createJob();
    std::pair<int, QString> ended{-1, "no end"};
    QEventLoop loop;
    QObject::connect(job, &KJob::result, [&](KJob* done) {
        ended = {done->error(), done->errorText()};
        loop.quit();
    });
    QTimer::singleShot(60000, &loop, &QEventLoop::quit);
    QProcess actor;
    actor.start("sh", {"-c", person});
    job->start();
    loop.exec();
    actor.waitForFinished();
    return ended;
}

// A click at %1, %2 from the sheet's top-left corner, as X counts.
const QString kClickOnSheet(
    "w=$(timeout 30 xdotool search --sync --onlyvisible --name '^Parley$' "
    "| head -n 1); xdotool mousemove --window \"$w\" %1 %2 click 1");

TEST(PurposePluginTest, OfferedForFilesAndLinksInEveryShippedLanguage) {
    const struct {
        QJsonObject input;
        const char *locale, *action;
    } kCases[] = {
        {input({"file:///p/holiday.jpg"}, "mimeType", "image/jpeg"), "en_US", "Share to Parley"},
        {input({"file:///p/a.txt", "file:///p/b.ods"}, "mimeType", "application/octet-stream"),
         "de_DE", "Mit Parley teilen"},
        {input({"file:///p/plan.pdf"}, "mimeType", "application/pdf"), "fr_FR",
         "Partager avec Parley"},
        {input({"https://example.org/"}, "title", "A page"), "es_ES", "Compartir con Parley"},
    };
    Purpose::AlternativesModel model;
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.locale);
        QLocale::setDefault(QLocale(c.locale));
        const QModelIndex row = parley(model, c.input);
        EXPECT_EQ(row.data(Purpose::AlternativesModel::ActionDisplayRole), c.action);
        EXPECT_EQ(row.data(Purpose::AlternativesModel::IconNameRole), "parley-share");
    }
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", "/usr/bin:/bin");
    EXPECT_FALSE(parley(model, kCases[0].input).isValid());
    qputenv("PATH", path);
}

// On the display, a click on the favourites row hands the files to the host, which records them
// when the share launches it; Cancel ends the job as killed, which Purpose shows as nothing.
TEST(PurposePluginTest, TheJobEndsWithTheSheet) {
    const QString container =
        gRoot + "/xdg_data_home/group-containers/P4RL3YSH4R.com.parleyapp.Parley/";
    QFile(gRoot + "/a b.txt").open(QIODevice::WriteOnly);
    EXPECT_EQ(share(input({"file://" + gRoot + "/a%20b.txt"}, "mimeType", "text/plain"),
                    kClickOnSheet.arg(57 + 75).arg(370 - (79 + 18 + 7))),
              std::make_pair(0, QString()));
    QEventLoop wait;
    for (int i = 0; i < 300 && readAll(gRoot + "/records.jsonl").isEmpty(); ++i)
        wait.processEvents(QEventLoop::WaitForMoreEvents, 100);
    // What the host moved the files to is named by when it received them; the record is not.
    const auto record = readAll(gRoot + "/records.jsonl");
    EXPECT_EQ(record.left(record.indexOf(",\"received\"")),
              "{\"event\":\"start\",\"type\":\"public.file-url\",\"entry\":\"favToParley\","
              "\"paths\":[\"" +
                  container + "a b.txt\"],\"invalidNames\":[],\"invalidSizes\":[]");
    EXPECT_EQ(share(input({"https://example.org/"}, "title", "A page"),
                    kClickOnSheet.arg(276 + 35).arg(370 - (28 + 11)))
                  .first,
              KJob::KilledJobError);
}

// What parley-share is given, and how its end becomes the job's: a stand-in records its arguments
// and ends as told.
TEST(PurposePluginTest, ArgumentsAndEndings) {
    const QJsonObject text = input({"file:///p/a.txt"}, "mimeType", "text/plain");
    const struct {
        QJsonObject input;
        const char *program, *end, *arguments;
        int error;
        const char* text;
    } kCases[] = {
        {input({"file:///p/a%20b.txt", "file:///p/-c.pdf"}, "mimeType", "application/pdf"),
         PARLEY_STAND_IN, "exit 0", "--\n/p/a b.txt\n/p/-c.pdf\n", 0, ""},
        {text, PARLEY_STAND_IN,
         "echo 'parley-share: the disk is full' >&2; echo '  --help  show this text' >&2; exit 1",
         "--\n/p/a.txt\n", KJob::UserDefinedError, "parley-share: the disk is full"},
        {input({"sftp://host/x.jpg"}, "mimeType", "image/jpeg"), PARLEY_STAND_IN, "", "",
         KJob::UserDefinedError,
         "Parley takes local files or one web link, not sftp://host/x.jpg."},
        {text, "/nonexistent/parley-share", "", "", KJob::UserDefinedError,
         "Cannot run /nonexistent/parley-share: execvp: No such file or directory"},
    };
    qputenv("PARLEY_TEST_ARGUMENTS", (gRoot + "/arguments").toUtf8());
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.end);
        QFile::remove(gRoot + "/arguments");
        qputenv("PARLEY_SHARE_EXECUTABLE", c.program);
        qputenv("PARLEY_TEST_END", c.end);
        EXPECT_EQ(share(c.input), std::make_pair(c.error, QString(c.text)));
        EXPECT_EQ(readAll(gRoot + "/arguments"), c.arguments);
    }
    qunsetenv("PARLEY_SHARE_EXECUTABLE");
}

}  // namespace

// Everything the programs write goes under a temporary root, where the tree is installed; its bin
// and Qt 5 plugin folders come first.
int main(int argc, char** argv) {
    QTemporaryDir root;
    gRoot = root.path();
    for (const char* name :
         {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR"}) {
        const QString folder = gRoot + "/" + QString(name).toLower();
        QDir().mkpath(folder);
        QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        qputenv(name, folder.toUtf8());
    }
    QProcess install;
    install.setStandardOutputFile(QProcess::nullDevice());
    install.start("cmake", {"--install", PARLEY_BUILD_DIR, "--prefix", gRoot + "/prefix"});
    if (!install.waitForFinished(120000) || install.exitCode() != 0)
        return 70;
    qputenv("PATH", (gRoot + "/prefix/bin:").toUtf8() + qgetenv("PATH"));
    qputenv("QT_PLUGIN_PATH", (gRoot + "/prefix/" PARLEY_QT5_PLUGIN_DIR).toUtf8());
    qputenv("PARLEY_HOST_ONCE", "1");
    qputenv("PARLEY_HOST_RECORD_FILE", (gRoot + "/records.jsonl").toUtf8());
    qunsetenv("PARLEY_APPLICATIONS_DIR");
    QCoreApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
