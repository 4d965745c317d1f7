#include "platform/NotificationCenter.h"
#include "tests/support/TestCase.h"

#include <memory>
#include <optional>

class tst_NotificationCenter : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void postReachesItsObserversBeforeItReturns();
    void othersNamesAreNotHeard();
    void anyObserverHearsEverySender();
    void senderFilterHearsThatSenderAlone();
    void filterOnADestroyedSenderMatchesNothing();
    void postWithoutASenderReachesThoseWhoTakeAny();
    void observersHearInOrderOfSubscribing();
    void oneOwnerMayObserveSeveralNames();
    void subscriptionEndsWithItsOwner();
    void removeObserverEndsAllOfTheOwners();
    void oneSubscriptionCanBeEndedAlone();
    void withoutAnOwnerOrAHandlerNothingIsSubscribed();
    void observerAddedDuringDeliveryHearsTheNextPost();
    void observerRemovedDuringDeliveryHearsNoMore();
    void observerMayRemoveItselfDuringDelivery();
    void observerDestroyedDuringDeliveryHearsNoMore();
    void observerMayDestroyItselfDuringDelivery();
    void postDuringDeliveryIsDeliveredAtOnce();
    void senderDestroyedDuringDeliveryEndsIt();
    void centreMayBeDestroyedDuringDelivery();
    void handlerIsReleasedWithItsOwner();
    void defaultCentreIsOneAndShared();

private:
    // A handler that writes down a word.
    NotificationCenter::Handler say(const char *word)
    {
        return [this, text = QString::fromLatin1(word)](QObject *) { m_heard << text; };
    }
    QString heard() { return std::exchange(m_heard, QStringList()).join(u' '); }

    const QString m_name = QStringLiteral("SomethingHappened");
    std::unique_ptr<NotificationCenter> m_center;
    QStringList m_heard;
};

void tst_NotificationCenter::init()
{
    TestCase::init();
    m_center = std::make_unique<NotificationCenter>();
    m_heard.clear();
}

void tst_NotificationCenter::postReachesItsObserversBeforeItReturns()
{
    QObject owner;
    QObject sender;
    QObject *from = nullptr;
    m_center->addObserver(&owner, m_name, [&from](QObject *object) { from = object; });
    m_center->post(m_name, &sender);
    QCOMPARE(from, &sender);
}

void tst_NotificationCenter::othersNamesAreNotHeard()
{
    QObject owner;
    m_center->addObserver(&owner, m_name, say("heard"));
    m_center->post(QStringLiteral("SomethingElse"), &owner);
    m_center->post(QString(), &owner);
    QCOMPARE(heard(), QString());
}

void tst_NotificationCenter::anyObserverHearsEverySender()
{
    QObject owner;
    QObject first;
    QObject second;
    m_center->addObserver(&owner, m_name, say("heard"));
    m_center->post(m_name, &first);
    m_center->post(m_name, &second);
    QCOMPARE(heard(), QStringLiteral("heard heard"));
}

void tst_NotificationCenter::senderFilterHearsThatSenderAlone()
{
    QObject owner;
    QObject meant;
    QObject other;
    m_center->addObserver(&owner, m_name, say("heard"), &meant);
    m_center->post(m_name, &other);
    QCOMPARE(heard(), QString());
    m_center->post(m_name, &meant);
    QCOMPARE(heard(), QStringLiteral("heard"));
}

void tst_NotificationCenter::filterOnADestroyedSenderMatchesNothing()
{
    QObject owner;
    // Both senders at one address, as a new object may well stand where another was.
    std::optional<QObject> sender(std::in_place);
    m_center->addObserver(&owner, m_name, say("heard"), &*sender);
    sender.emplace();
    m_center->post(m_name, &*sender);
    m_center->post(m_name, nullptr);
    QCOMPARE(heard(), QString());
}

void tst_NotificationCenter::postWithoutASenderReachesThoseWhoTakeAny()
{
    QObject owner;
    m_center->addObserver(&owner, m_name, say("any"));
    m_center->addObserver(&owner, m_name, say("one"), &owner);
    m_center->post(m_name, nullptr);
    QCOMPARE(heard(), QStringLiteral("any"));
}

void tst_NotificationCenter::observersHearInOrderOfSubscribing()
{
    QObject a;
    QObject b;
    m_center->addObserver(&b, m_name, say("1"));
    m_center->addObserver(&a, m_name, say("2"));
    m_center->addObserver(&b, m_name, say("3"));
    m_center->post(m_name, nullptr);
    QCOMPARE(heard(), QStringLiteral("1 2 3"));
}

void tst_NotificationCenter::oneOwnerMayObserveSeveralNames()
{
    QObject owner;
    const QString other = QStringLiteral("SomethingElse");
    m_center->addObserver(&owner, m_name, say("a"));
    m_center->addObserver(&owner, other, say("b"));
    m_center->post(other, nullptr);
    m_center->post(m_name, nullptr);
    QCOMPARE(heard(), QStringLiteral("b a"));
}

void tst_NotificationCenter::subscriptionEndsWithItsOwner()
{
    auto owner = std::make_unique<QObject>();
    m_center->addObserver(owner.get(), m_name, say("heard"));
    owner.reset();
    m_center->post(m_name, nullptr);
    QCOMPARE(heard(), QString());
}

void tst_NotificationCenter::removeObserverEndsAllOfTheOwners()
{
    QObject owner;
    QObject other;
    m_center->addObserver(&owner, m_name, say("a"));
    m_center->addObserver(&owner, m_name, say("b"), &other);
    m_center->addObserver(&other, m_name, say("c"));
    m_center->removeObserver(&owner);
    m_center->removeObserver(nullptr);
    m_center->post(m_name, &other);
    QCOMPARE(heard(), QStringLiteral("c"));
}

void tst_NotificationCenter::oneSubscriptionCanBeEndedAlone()
{
    QObject owner;
    const auto first = m_center->addObserver(&owner, m_name, say("a"));
    m_center->addObserver(&owner, m_name, say("b"));
    QVERIFY(QObject::disconnect(first));
    m_center->post(m_name, nullptr);
    QCOMPARE(heard(), QStringLiteral("b"));
}

void tst_NotificationCenter::withoutAnOwnerOrAHandlerNothingIsSubscribed()
{
    QObject owner;
    QVERIFY(!m_center->addObserver(nullptr, m_name, say("heard")));
    QVERIFY(!m_center->addObserver(&owner, m_name, nullptr));
    m_center->post(m_name, nullptr);
    QCOMPARE(heard(), QString());
}

void tst_NotificationCenter::observerAddedDuringDeliveryHearsTheNextPost()
{
    QObject owner;
    const auto first = m_center->addObserver(
        &owner, m_name, [&](QObject *) { m_center->addObserver(&owner, m_name, say("late")); });
    m_center->post(m_name, nullptr);
    QCOMPARE(heard(), QString());
    QObject::disconnect(first);
    m_center->post(m_name, nullptr);
    QCOMPARE(heard(), QStringLiteral("late"));
}

void tst_NotificationCenter::observerRemovedDuringDeliveryHearsNoMore()
{
    QObject owner;
    QObject removed;
    m_center->addObserver(&removed, m_name, say("before"));
    m_center->addObserver(&owner, m_name, [&](QObject *) { m_center->removeObserver(&removed); });
    m_center->addObserver(&removed, m_name, say("after"));
    m_center->addObserver(&owner, m_name, say("last"));
    m_center->post(m_name, nullptr);
    QCOMPARE(heard(), QStringLiteral("before last"));
}

void tst_NotificationCenter::observerMayRemoveItselfDuringDelivery()
{
    QObject owner;
    QObject other;
    // The word is the handler's own: it must outlive the subscription that holds it.
    m_center->addObserver(&owner, m_name, [this, &owner, word = QString(200, u'x')](QObject *) {
        m_center->removeObserver(&owner);
        m_heard << word;
    });
    m_center->addObserver(&other, m_name, say("other"));
    m_center->post(m_name, nullptr);
    QCOMPARE(heard(), QString(200, u'x') + QStringLiteral(" other"));
    m_center->post(m_name, nullptr);
    QCOMPARE(heard(), QStringLiteral("other"));
}

void tst_NotificationCenter::observerDestroyedDuringDeliveryHearsNoMore()
{
    QObject owner;
    auto destroyed = std::make_unique<QObject>();
    m_center->addObserver(&owner, m_name, [&](QObject *) { destroyed.reset(); });
    m_center->addObserver(destroyed.get(), m_name, say("destroyed"));
    m_center->addObserver(&owner, m_name, say("last"));
    m_center->post(m_name, nullptr);
    QCOMPARE(heard(), QStringLiteral("last"));
}

void tst_NotificationCenter::observerMayDestroyItselfDuringDelivery()
{
    QObject other;
    auto owner = std::make_unique<QObject>();
    m_center->addObserver(owner.get(), m_name, [this, &owner, word = QString(200, u'x')](QObject *) {
        owner.reset();
        m_heard << word;
    });
    m_center->addObserver(&other, m_name, say("other"));
    m_center->post(m_name, nullptr);
    QCOMPARE(heard(), QString(200, u'x') + QStringLiteral(" other"));
}

void tst_NotificationCenter::postDuringDeliveryIsDeliveredAtOnce()
{
    QObject owner;
    const QString inner = QStringLiteral("SomethingElse");
    int depth = 0;
    m_center->addObserver(&owner, m_name, [&](QObject *) {
        m_heard << QStringLiteral("begin");
        m_center->post(inner, nullptr);
        if (++depth == 1)
            m_center->post(m_name, nullptr);
        m_heard << QStringLiteral("end");
    });
    m_center->addObserver(&owner, inner, say("inner"));
    m_center->addObserver(&owner, m_name, say("second"));
    m_center->post(m_name, nullptr);
    QCOMPARE(heard(), QStringLiteral("begin inner begin inner end second end second"));
}

void tst_NotificationCenter::senderDestroyedDuringDeliveryEndsIt()
{
    QObject owner;
    auto sender = std::make_unique<QObject>();
    m_center->addObserver(&owner, m_name, say("before"));
    m_center->addObserver(&owner, m_name, [&](QObject *) { sender.reset(); });
    m_center->addObserver(&owner, m_name, say("after"));
    m_center->post(m_name, sender.get());
    QCOMPARE(heard(), QStringLiteral("before"));
}

void tst_NotificationCenter::centreMayBeDestroyedDuringDelivery()
{
    QObject owner;
    m_center->addObserver(&owner, m_name, [this](QObject *) { m_center.reset(); });
    m_center->addObserver(&owner, m_name, say("after"));
    m_center->post(m_name, nullptr);
    QCOMPARE(heard(), QString());
    QVERIFY(!m_center);
}

void tst_NotificationCenter::handlerIsReleasedWithItsOwner()
{
    const auto held = std::make_shared<int>(1);
    auto owner = std::make_unique<QObject>();
    m_center->addObserver(owner.get(), m_name, [held](QObject *) {});
    QCOMPARE(held.use_count(), 2L);
    owner.reset();
    QCOMPARE(held.use_count(), 1L);
}

void tst_NotificationCenter::defaultCentreIsOneAndShared()
{
    QCOMPARE(&NotificationCenter::defaultCenter(), &NotificationCenter::defaultCenter());
    QObject owner;
    NotificationCenter::defaultCenter().addObserver(&owner, m_name, say("default"));
    m_center->post(m_name, nullptr);
    QCOMPARE(heard(), QString());
    NotificationCenter::defaultCenter().post(m_name, nullptr);
    QCOMPARE(heard(), QStringLiteral("default"));
}

LINKLIST_TEST_MAIN(tst_NotificationCenter)
#include "tst_NotificationCenter.moc"
