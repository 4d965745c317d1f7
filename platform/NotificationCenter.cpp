#include "platform/NotificationCenter.h"

// A signal's own rules for connections that come and go during its delivery are the ones promised here.

NotificationCenter &NotificationCenter::defaultCenter()
{
    static NotificationCenter center;
    return center;
}

NotificationCenter::NotificationCenter(QObject *parent)
    : QObject(parent)
{
}

QMetaObject::Connection NotificationCenter::addObserver(QObject *owner, const QString &name, Handler handler,
                                                        QObject *sender)
{
    if (!owner || !handler)
        return QMetaObject::Connection();
    // Guarded, as a later object at the address of one that is gone is not the sender that was meant.
    const auto isMeant = [anySender = !sender, wanted = QPointer<QObject>(sender)](QObject *from) {
        return anySender || (from && wanted == from);
    };
    const auto deliver = [name, isMeant, handler = std::move(handler)](
                             const QString &postedName, QObject *from, const QPointer<QObject> &living) {
        const bool isGone = from && !living;
        if (postedName == name && !isGone && isMeant(from))
            handler(from);
    };
    return connect(this, &NotificationCenter::posted, owner, deliver, Qt::DirectConnection);
}

void NotificationCenter::removeObserver(QObject *owner)
{
    if (owner)
        disconnect(this, nullptr, owner, nullptr);
}

void NotificationCenter::post(const QString &name, QObject *sender)
{
    Q_EMIT posted(name, sender, QPointer<QObject>(sender));
}
