#include "host/Options.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <cstdio>

std::optional<int> Options::read(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Opens the Link List Plugin's settings window on a workspace.\n\n"
        "Exit status: 0 the settings were applied (or the smoke test passed), 3 they were reverted,\n"
        "1 something could not be loaded, opened or copied, 2 the arguments are wrong."));
    const QCommandLineOption help({QStringLiteral("h"), QStringLiteral("help")},
                                  QStringLiteral("Shows this text."));
    const QCommandLineOption workspaceOption(QStringLiteral("workspace"),
                                             QStringLiteral("The plug-in's folder; made when missing."),
                                             QStringLiteral("DIR"));
    const QCommandLineOption languageOption(QStringLiteral("language"),
                                            QStringLiteral("The window's language: en, de, ja."),
                                            QStringLiteral("CODE"));
    const QCommandLineOption bundleOption(QStringLiteral("bundle"),
                                          QStringLiteral("The bundle; linklist.bundle beside this program."),
                                          QStringLiteral("DIR"));
    const QCommandLineOption bookOption(
        QStringLiteral("book"), QStringLiteral("The book into whose files/plugin an applied workspace goes."),
        QStringLiteral("DIR"));
    const QCommandLineOption modalOption(QStringLiteral("modal"), QStringLiteral("Runs the window modally."));
    const QCommandLineOption smokeOption(QStringLiteral("smoke-test"),
                                         QStringLiteral("Loads, opens and closes the window, and ends."));
    const QCommandLineOption publishOption(
        QStringLiteral("publish"),
        QStringLiteral("Opens the window, presses OK, and ends: brings a book up to date without a person."));
    const QCommandLineOption geometryOption(
        QStringLiteral("print-geometry"),
        QStringLiteral(
            "For scripts: writes name, x, y, width and height of each part and row on the screen."),
        QStringLiteral("FILE"));
    parser.addOptions({help, workspaceOption, languageOption, bundleOption, bookOption, modalOption,
                       smokeOption, publishOption, geometryOption});

    if (!parser.parse(arguments) || !parser.positionalArguments().isEmpty()) {
        const QString mistake = parser.errorText().isEmpty()
            ? QStringLiteral("unexpected argument: ") + parser.positionalArguments().join(u' ')
            : parser.errorText();
        std::fprintf(stderr, "linklist-host: %s\n", qPrintable(mistake));
        return BadArguments;
    }
    if (parser.isSet(help)) {
        std::printf("%s", qPrintable(parser.helpText()));
        return Applied;
    }
    const auto folder = [&parser](const QCommandLineOption &option) {
        return parser.value(option).isEmpty()
            ? QString()
            : QDir::cleanPath(QDir().absoluteFilePath(parser.value(option)));
    };
    workspace = folder(workspaceOption);
    language = parser.isSet(languageOption) ? parser.value(languageOption) : QString();
    bundle = parser.isSet(bundleOption)
        ? folder(bundleOption)
        : QCoreApplication::applicationDirPath() + QStringLiteral("/linklist.bundle");
    book = folder(bookOption);
    geometryFile = folder(geometryOption);
    isModal = parser.isSet(modalOption);
    isSmokeTest = parser.isSet(smokeOption);
    isPublishing = parser.isSet(publishOption);
    return std::nullopt;
}
