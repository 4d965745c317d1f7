#include <PluginSettingsInterface.h>

#include <QCoreApplication>
#include <QJsonObject>
#include <QPluginLoader>
#include <cstdio>
#include <type_traits>

static_assert(std::has_virtual_destructor_v<PluginSettings>);
static_assert(std::has_virtual_destructor_v<PluginSettingsInterface>);

// host MODULE: whether the installed module answers to the interface of the installed header.
int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const QPluginLoader loader(arguments.value(1));
    const QString interface = loader.metaData().value(QStringLiteral("IID")).toString();
    std::printf("%s\n", qPrintable(interface));
    return interface == QLatin1String(PluginSettingsInterface_iid) ? 0 : 1;
}
