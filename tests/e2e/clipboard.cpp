// Prints what the display's clipboard holds: how a script reads a field that it has copied from.
#include <QClipboard>
#include <QGuiApplication>
#include <cstdio>

int main(int argc, char **argv)
{
    const QGuiApplication application(argc, argv);
    std::printf("%s\n", qPrintable(QGuiApplication::clipboard()->text()));
}
