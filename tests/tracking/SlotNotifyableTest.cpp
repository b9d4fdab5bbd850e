#include "tracking/SlotNotifyable.h"

#include "tests/tracking/ChangeTestSupport.h"

#include <QMetaMethod>
#include <gtest/gtest.h>

#include <type_traits>

namespace Orrery {
namespace {

/// The least that a client can be.
class QuietClient : public ISlotNotifyable
{
public:
    ISlotNotifyable& Update() override { return *this; }
};

TEST(SlotNotifyable, HasTheMetaObjectThatNotifiersConnectTo)
{
    const QMetaObject& meta = ISlotNotifyable::staticMetaObject;
    EXPECT_STREQ(meta.className(), "Orrery::ISlotNotifyable");
    const char* const signatures[] = {"Update()", "Removed()", "Renamed()"};
    ASSERT_EQ(meta.methodCount() - meta.methodOffset(), 3);
    for (int i = 0; i < 3; ++i) {
        const QMetaMethod method = meta.method(meta.methodOffset() + i);
        EXPECT_STREQ(method.methodSignature().constData(), signatures[i]);
        EXPECT_EQ(method.methodType(), QMetaMethod::Slot) << i;
        EXPECT_EQ(method.access(), QMetaMethod::Public) << i;
    }
    EXPECT_TRUE(std::is_abstract_v<ISlotNotifyable>);
    EXPECT_EQ(sizeof(ISlotNotifyable), sizeof(QObject));
}

TEST(SlotNotifyable, HearsEachSignalInItsOwnOperation)
{
    const Variable variable(QStringLiteral("x"));
    const ConnectedClient client(variable);
    variable.getNotifier()->Modify();
    EXPECT_EQ(client.updates, 1);
    EXPECT_EQ(client.removals + client.renamings, 0);
    variable.getNotifier()->Remove();
    EXPECT_EQ(client.removals, 1);
    variable.getNotifier()->PathChanged();
    EXPECT_EQ(client.renamings, 1);
    EXPECT_EQ(client.updates, 1);
}

TEST(SlotNotifyable, HearsEverythingTwiceAfterASecondConnect)
{
    const Variable variable(QStringLiteral("x"));
    ConnectedClient client(variable);
    client.ConnectTo(variable, Qt::DirectConnection);
    variable.getNotifier()->Modify();
    variable.getNotifier()->Remove();
    variable.getNotifier()->PathChanged();
    EXPECT_EQ(client.updates, 2);
    EXPECT_EQ(client.removals, 2);
    EXPECT_EQ(client.renamings, 2);
}

TEST(SlotNotifyable, HearsNothingAfterDisconnect)
{
    const Variable variable(QStringLiteral("x"));
    const Variable other(QStringLiteral("y"));
    ConnectedClient client(variable);
    client.ConnectTo(variable, Qt::DirectConnection);
    client.ConnectTo(other, Qt::DirectConnection);
    const ConnectedClient bystander(variable);

    client.DisconnectFrom(variable);

    for (const Variable* sender : {&variable, &other}) {
        sender->getNotifier()->Modify();
        sender->getNotifier()->Remove();
        sender->getNotifier()->PathChanged();
    }
    EXPECT_EQ(client.updates, 1); // of the other
    EXPECT_EQ(client.removals, 1);
    EXPECT_EQ(client.renamings, 1);
    EXPECT_EQ(bystander.updates, 1);
}

TEST(SlotNotifyable, LosesConnectionsOfAHostsOwnOnDisconnectToo)
{
    const Variable variable(QStringLiteral("x"));
    Client client;
    QObject::connect(variable.getNotifier(), SIGNAL(Renamed()), &client, SLOT(Update()));
    client.DisconnectFrom(variable);
    variable.getNotifier()->PathChanged();
    EXPECT_EQ(client.updates, 0);
}

TEST(SlotNotifyable, StandsADisconnectWithoutAConnection)
{
    const MessageCapture log;
    const Variable variable(QStringLiteral("x"));
    ConnectedClient client(variable);
    const Variable stranger(QStringLiteral("y"));
    client.DisconnectFrom(stranger);
    variable.getNotifier()->Modify();
    EXPECT_EQ(client.updates, 1);
    EXPECT_EQ(log.warnings(), QStringList());
}

TEST(SlotNotifyable, DoesNothingByDefaultAndReturnsItself)
{
    QuietClient client;
    EXPECT_EQ(&client.Removed(), &client);
    EXPECT_EQ(&client.Renamed(), &client);

    auto variable = std::make_unique<Variable>(QStringLiteral("x"));
    client.ConnectTo(*variable, Qt::DirectConnection);
    EXPECT_GE(variable->SetName(QStringLiteral("y")), 0);
    variable.reset();
}

TEST(SlotNotifyable, MayGoBeforeTheVariable)
{
    const Variable variable(QStringLiteral("x"));
    {
        const ConnectedClient client(variable);
        variable.getNotifier()->Modify();
        EXPECT_EQ(client.updates, 1);
    }
    variable.getNotifier()->Modify();
    EXPECT_EQ(variable.getNotifier()->getDirtyTracker()->getUpdateCount(), 2);
}

TEST(SlotNotifyable, ConnectsToNothingInAMovedFromVariable)
{
    const MessageCapture log;
    Variable source(QStringLiteral("x"));
    const Variable target(std::move(source));
    Client client;
    client.ConnectTo(source, Qt::DirectConnection);
    client.DisconnectFrom(source);
    target.getNotifier()->Modify();
    EXPECT_EQ(client.updates, 0);
    EXPECT_EQ(log.warnings(), QStringList());
}

TEST(SlotNotifyable, MayAnswerAChangeWithAChange)
{
    Variable variable(QStringLiteral("x"));
    ConnectedClient client(variable);
    client.onUpdate = [&] { variable.UpdateData(numbers({1, 2, 3})); };
    variable.UpdateData(numbers({1}));
    EXPECT_EQ(client.updates, 1);
    EXPECT_EQ(variable.GetMaxIndepOffset(), 3u);
}

} // namespace
} // namespace Orrery
