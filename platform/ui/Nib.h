#pragma once

#include <QByteArray>
#include <QString>
#include <functional>

class QWidget;

// An interface file in Qt Designer's form. Its texts are translated by loadAppString() as it is loaded,
// without a translator in the host's application; texts marked as not translatable, object names and style
// sheets stay as they are. The system's own widget classes are made by their registered name. Files of more
// than 16 MiB and elements nested more than 256 deep are refused.
class Nib
{
public:
    using Maker = std::function<QWidget *(QWidget *parent)>;

    // The file's content.
    explicit Nib(QByteArray data)
        : m_data(std::move(data))
    {
    }

    // An unreadable file gives an interface that cannot be made and says why.
    static Nib fromFile(const QString &path);

    // A new set of the file's widgets, owned by the parent or else by the caller. Null on failure.
    QWidget *instantiate(QWidget *parent = nullptr);

    // Why the last instantiate() failed; empty when it did not.
    QString errorString() const { return m_error; }

    // From now on every element of that class is a T, made by T(QWidget *parent).
    template <typename T>
    static void registerClass(const QString &className = QString::fromLatin1(T::staticMetaObject.className()))
    {
        registerMaker(className, [](QWidget *parent) -> QWidget * { return new T(parent); });
    }

private:
    static void registerMaker(const QString &className, const Maker &maker);

    QByteArray m_data;
    QString m_path;
    QString m_error;
};
