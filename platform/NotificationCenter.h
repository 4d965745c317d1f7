#pragma once

#include <QObject>
#include <QPointer>
#include <functional>

// Broadcasts by name: whoever observes a name hears of every post under it, before the post returns, in the
// order of subscribing. Names are process-wide constants. While a post is being delivered, observers may
// subscribe (they hear the next post), unsubscribe or be destroyed (they hear no more, not even of this one)
// and post again. When the sender is destroyed during its own post, the observers still due hear nothing:
// there is nothing left to tell them about. For the main thread only.
class NotificationCenter : public QObject
{
    Q_OBJECT

public:
    using Handler = std::function<void(QObject *sender)>;

    // The one that all windows of this module share. It lives as long as the process.
    static NotificationCenter &defaultCenter();

    explicit NotificationCenter(QObject *parent = nullptr);

    // Calls the handler for every post of that name, or for that sender's posts alone when one is given. It
    // ends with its owner, with removeObserver, or by disconnecting what is returned; without an owner or a
    // handler nothing is subscribed. A class whose destructor may cause posts unsubscribes there first.
    QMetaObject::Connection addObserver(QObject *owner, const QString &name, Handler handler,
                                        QObject *sender = nullptr);

    // Ends everything that this owner subscribed to here.
    void removeObserver(QObject *owner);

    // Without a sender only those hear it who did not ask for a certain one.
    void post(const QString &name, QObject *sender);

Q_SIGNALS:
    // Carries each post to the observers; use addObserver and post instead of connecting to it.
    void posted(const QString &name, QObject *sender, const QPointer<QObject> &living);
};
