// kelvorandine: the desktop workbench. `kelvorandine [FILE] [--filter NAME] [--home DIR]`.
#include "app/main_window.h"
#include "import/file_filters.h"
#include "platform/home_folder.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QTimer>
#include <cstdio>
#include <optional>

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    QApplication::setOrganizationName("Kelvorandine");
    QApplication::setApplicationName("Kelvorandine");
    // Ties the running program to its .desktop entry (its name and icon on the desktop).
    QGuiApplication::setDesktopFileName(QStringLiteral("kelvorandine"));

    QCommandLineParser parser;
    parser.setApplicationDescription("Kelvorandine workbench");
    parser.addHelpOption();
    parser.addPositionalArgument("FILE", "Recording to import at start");
    QCommandLineOption filterOpt("filter", "Import dialog entry for FILE (WAV, DZT, ...)", "NAME");
    QCommandLineOption homeOpt("home", "Home folder (SP.ini, working files)", "DIR");
    // For checking the workbench by eye on a machine without a person at it: play the imported
    // file through, save a picture of the window, and quit.
    QCommandLineOption playOpt("play", "Play the imported file through once");
    QCommandLineOption grabOpt("grab", "Save a picture of the window to PNG, then quit", "PNG");
    QCommandLineOption pressOpt("press", "Press these toolbar buttons first", "N,N,...");
    pressOpt.setFlags(QCommandLineOption::HiddenFromHelp);
    playOpt.setFlags(QCommandLineOption::HiddenFromHelp);
    grabOpt.setFlags(QCommandLineOption::HiddenFromHelp);
    parser.addOption(filterOpt);
    parser.addOption(homeOpt);
    parser.addOption(playOpt);
    parser.addOption(grabOpt);
    parser.addOption(pressOpt);
    parser.process(app);

    QString home;
    if (parser.isSet(homeOpt))
        home = parser.value(homeOpt);
    else if (qEnvironmentVariableIsSet("KELVORANDINE_HOME"))
        home = qEnvironmentVariable("KELVORANDINE_HOME");
    else {
        // An installed copy may live where the user cannot write: its home then moves to the
        // user's data folder, filled from the factory home on the first start.
        const std::string program = QCoreApplication::applicationDirPath().toStdString();
        home = QString::fromStdString(
            kv::defaultHomeFolder(program, kv::folderWritable(program), kv::userDataFolder()));
    }
    home = QDir(home).absolutePath();

    // Names on the command line are relative to where the user started us; the workbench moves
    // its current folder to the home folder as it starts.
    QStringList files = parser.positionalArguments();
    for (QString& f : files)
        f = QDir(f).absolutePath();
    const QString grab =
        parser.isSet(grabOpt) ? QDir(parser.value(grabOpt)).absolutePath() : QString();

    // The filter name is checked before any window shows; its place in the dialog's list
    // depends on Fil, known once the settings are read.
    std::optional<kv::FilterName> filter;
    if (parser.isSet(filterOpt)) {
        kv::FilterName f;
        if (!kv::parseFilterName(parser.value(filterOpt).toStdString(), f)) {
            std::fprintf(stderr, "kelvorandine: unknown filter %s\n",
                         qPrintable(parser.value(filterOpt)));
            return 2;
        }
        filter = f;
    }

    kv::MainWindow w(home.toStdString());
    // A second workbench on the same home would overwrite the first one's working file.
    if (!w.claimHome()) return 1;
    w.show();
    if (!files.isEmpty()) {
        const int index = filter ? kv::filterIndexOf(w.state().Fil, *filter) : 0;
        w.importFile(files.first().toStdString(), index);
    }
    if (parser.isSet(playOpt) || parser.isSet(grabOpt) || parser.isSet(pressOpt)) {
        const bool play = parser.isSet(playOpt);
        const QStringList presses = parser.value(pressOpt).split(',', Qt::SkipEmptyParts);
        QTimer::singleShot(300, &w, [&w, play, grab, presses] {
            for (const QString& n : presses)
                w.pressToolButton(n.toInt());
            if (play) w.pressToolButton(12);
            if (!grab.isEmpty()) {
                QApplication::processEvents();
                w.grab().save(grab);
                w.close();
            }
        });
    }
    return app.exec();
}
