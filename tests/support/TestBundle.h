#pragma once

#include <QString>
#include <QTemporaryDir>

class QWidget;

// A copy of the built bundle that a test may change, with a plain frame in place of the web view, so that a
// window opens without starting the web engine; and a workspace that is not there yet.
class TestBundle
{
public:
    TestBundle();

    QString path() const { return m_folder.filePath(QStringLiteral("linklist.bundle")); }
    QString resource(const char *name) const;
    QString workSpace() const { return m_folder.filePath(QStringLiteral("workspace")); }
    QString inWorkSpace(const char *name) const { return workSpace() + u'/' + QString::fromUtf8(name); }

    // Replaces text in an interface file ("PrivateView"); ends the test program when there is nothing to
    // replace.
    void editNib(const char *name, const QByteArray &before, const QByteArray &after) const;

private:
    QTemporaryDir m_folder;
};
