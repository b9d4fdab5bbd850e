// Concatenations and sweeps whose members stand in files of their own: saved, moved as a folder, opened again and read,
// also when a file is missing or another one.
#include "foundations/storage/DataFileFactory.h"
#include "tests/foundations/storage/DataFiles.h"
#include "tests/variables/JoinedVariableTestSupport.h"
#include "variables/ConcatVar.h"
#include "variables/SweptVariable.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

namespace Orrery {
namespace {

using namespace JoinTest;
using StorageTest::Open;
using StorageTest::SaveNew;
using StorageTest::ScratchFolder;

const QString V = QStringLiteral("v");

/// "sweep.h5" with a concatenation "c" of v of "runs/0.h5", "runs/1.h5" and "runs/2.h5", and the sweep "s" along it over p
/// of "setup.h5".
class JoinedFiles : public testing::Test
{
protected:
    JoinedFiles()
    {
        QDir(disk.Path(QString())).mkpath(QStringLiteral("all/runs"));
        std::vector<std::shared_ptr<DataFile>> runs{saveRun("all", 0, {1, 2, 3}), saveRun("all", 1, {4, 5}),
                                                    saveRun("all", 2, {6})};
        const auto setup = SaveNew(path("all", "setup.h5"), [](PropertyObject& root) {
            insertData(root, QStringLiteral("p"), numbers({10, 20, 30}));
        });
        SaveNew(path("all", "sweep.h5"), [&](PropertyObject& root) {
            auto* const joined = insert(root, std::make_unique<ConcatVar>(QStringLiteral("c")));
            for (const auto& run : runs)
                ASSERT_EQ(joined->AddVariable(run->GetRoot()->GetPtr<Variable>(V)), ER_SUCCESS);
            auto* const swept = insert(root, std::make_unique<Variable>(QStringLiteral("s")));
            SweptVarStrategy& strategy = *swept->SetStrategy<SweptVarStrategy>();
            ASSERT_EQ(strategy.SetParameter(setup->GetRoot()->GetPtr<Variable>(QStringLiteral("p"))),
                      ER_SUCCESS);
            ASSERT_EQ(strategy.SetConcatVar(joined), ER_SUCCESS);
        });
    }

    QString path(const char* folder, const QString& name) const
    {
        return disk.Path(QString::fromLatin1(folder)) + QLatin1Char('/') + name;
    }
    QString path(const char* folder, const char* name) const
    {
        return path(folder, QString::fromLatin1(name));
    }
    QString runPath(const char* folder, int number) const
    {
        return path(folder, QStringLiteral("runs/%1.h5").arg(number));
    }
    std::shared_ptr<DataFile> saveRun(const char* folder, int number, Doubles values) const
    {
        return SaveNew(runPath(folder, number),
                       [&](PropertyObject& root) { insertData(root, V, numbers(values)); });
    }

    void open(const char* folder = "all")
    {
        file = Open(path(folder, "sweep.h5"));
        c = file->GetRoot()->GetPtr<Variable>(QStringLiteral("c"));
        s = file->GetRoot()->GetPtr<Variable>(QStringLiteral("s"));
        ASSERT_TRUE(c && s);
    }
    void expectAll() const
    {
        EXPECT_EQ(c->GetMaxIndepOffset(), 6U);
        EXPECT_EQ(ToDoubles(c->GetData()), (Doubles{1, 2, 3, 4, 5, 6}));
        EXPECT_EQ(ToDoubles(s->GetData()), (Doubles{10, 10, 10, 20, 20, 30}));
    }

    const ScratchFolder disk;
    std::shared_ptr<DataFile> file;
    Variable* c = nullptr;
    Variable* s = nullptr;
};

TEST_F(JoinedFiles, AreReadWhereTheyStand)
{
    open();
    EXPECT_EQ(DataFileFactory::Instance().FindOpen(runPath("all", 0)), nullptr);
    EXPECT_EQ(ToDoubles(readAt(*c, 1).out), Doubles{2});
    EXPECT_EQ(DataFileFactory::Instance().FindOpen(path("all", "setup.h5")), nullptr)
        << "opened when it is asked for";
    expectAll();
    EXPECT_EQ(readRange(*c, 2, 5), gotNumbers({3, 4, 5}));
    EXPECT_EQ(readRange(*s, 2, 5), gotNumbers({10, 20, 20}));
}

TEST_F(JoinedFiles, AreReadAfterTheFolderWasMoved)
{
    ASSERT_TRUE(QDir().rename(disk.Path(QStringLiteral("all")), disk.Path(QStringLiteral("moved"))));
    open("moved");
    expectAll();
    EXPECT_NE(DataFileFactory::Instance().FindOpen(runPath("moved", 0)), nullptr);
}

TEST_F(JoinedFiles, AreReadFromAReferrerThatWasMovedAlone)
{
    QDir(disk.Path(QString())).mkpath(QStringLiteral("alone"));
    ASSERT_TRUE(QFile::rename(path("all", "sweep.h5"), path("alone", "sweep.h5")));
    open("alone");
    expectAll();
    EXPECT_NE(DataFileFactory::Instance().FindOpen(runPath("all", 0)), nullptr);
}

TEST_F(JoinedFiles, AreReadFromWhereTheReferrerWasSavedTo)
{
    QDir(disk.Path(QString())).mkpath(QStringLiteral("all/deeper/down"));
    {
        const auto sweep = Open(path("all", "sweep.h5"), DataFile::ReadWrite);
        ASSERT_EQ(sweep->SaveAs(path("all/deeper/down", "sweep.h5")), ER_SUCCESS);
    }
    ASSERT_TRUE(QDir().rename(disk.Path(QStringLiteral("all")), disk.Path(QStringLiteral("moved"))));
    open("moved/deeper/down");
    expectAll();
}

/// What comes of a missing member in the middle: its offsets don't count, and a read that comes to it fails.
void expectWithoutTheMiddle(const Variable& c, const Variable& s)
{
    EXPECT_EQ(c.GetMaxIndepOffset(), 4U);
    EXPECT_EQ(s.GetMaxIndepOffset(), 4U);
    EXPECT_EQ(ToDoubles(readAt(c, 2).out), Doubles{3});
    EXPECT_EQ(readAt(c, 3).code, ER_FAILED);
    const Reading joined = readRange(c, 0, 0);
    EXPECT_EQ(joined.code, ER_FAILED);
    EXPECT_EQ(ToDoubles(joined.out), (Doubles{1, 2, 3}));
    const Reading swept = readRange(s, 0, 0);
    EXPECT_EQ(swept.code, ER_FAILED);
    EXPECT_EQ(ToDoubles(swept.out), (Doubles{10, 10, 10, 0}));
}

TEST_F(JoinedFiles, OneOfWhichIsMissingFailThereAndAreToldOnce)
{
    ASSERT_TRUE(QFile::remove(runPath("all", 1)));
    open();
    const MessageCapture log;
    expectWithoutTheMiddle(*c, *s);
    const QStringList told = log.warnings().filter(runPath("all", 1));
    EXPECT_EQ(told, QStringList{path("all", "sweep.h5") +
                                QStringLiteral(": reference /c/1 can't be resolved to /v: ") +
                                runPath("all", 1) + QStringLiteral(": No such file or directory")});
}

TEST_F(JoinedFiles, OneOfWhichIsMissingAfterAMoveAreToldWithBothPaths)
{
    ASSERT_TRUE(QDir().rename(disk.Path(QStringLiteral("all")), disk.Path(QStringLiteral("moved"))));
    ASSERT_TRUE(QFile::remove(runPath("moved", 1)));
    open("moved");
    const MessageCapture log;
    expectWithoutTheMiddle(*c, *s);
    const QStringList told = log.warnings().filter(runPath("moved", 1));
    ASSERT_EQ(told.size(), 1);
    EXPECT_TRUE(told[0].contains(runPath("all", 1))) << qPrintable(told[0]);
}

TEST_F(JoinedFiles, OneOfWhichIsAnotherFileNowFailThere)
{
    ASSERT_TRUE(QFile::remove(runPath("all", 1)));
    saveRun("all", 1, {7, 8}).reset();
    open();
    const MessageCapture log;
    expectWithoutTheMiddle(*c, *s);
    const QStringList told = log.warnings().filter(runPath("all", 1));
    ASSERT_EQ(told.size(), 1);
    EXPECT_TRUE(told[0].endsWith(QStringLiteral("is another file than the one that was referred to")))
        << qPrintable(told[0]);
}

TEST_F(JoinedFiles, OneOfWhichWasSavedAnewAreReadAsTheyAreNow)
{
    {
        const auto run = Open(runPath("all", 1), DataFile::ReadWrite);
        run->GetRoot()->GetPtr<Variable>(V)->UpdateData(numbers({40, 50, 55}));
        ASSERT_EQ(run->Save(), ER_SUCCESS);
    }
    open();
    EXPECT_EQ(ToDoubles(c->GetData()), (Doubles{1, 2, 3, 40, 50, 55, 6}));
    EXPECT_EQ(ToDoubles(s->GetData()), (Doubles{10, 10, 10, 20, 20, 20, 30}));
}

TEST_F(JoinedFiles, AreReadAsTheyWereWhenOneIsReplacedBeneathThem)
{
    open();
    EXPECT_EQ(c->GetMaxIndepOffset(), 6U); // all are open, nothing is read
    {
        const QString newer = disk.Path(QStringLiteral("newer.h5"));
        ASSERT_TRUE(QFile::copy(runPath("all", 1), newer));
        const auto run = Open(newer, DataFile::ReadWrite);
        run->GetRoot()->GetPtr<Variable>(V)->UpdateData(numbers({40, 50, 55}));
        ASSERT_EQ(run->Save(), ER_SUCCESS);
        ASSERT_TRUE(QFile::remove(runPath("all", 1)));
        ASSERT_TRUE(QFile::rename(newer, runPath("all", 1)));
    }
    expectAll();
    ASSERT_EQ(file->Load(), ER_SUCCESS);
    c = file->GetRoot()->GetPtr<Variable>(QStringLiteral("c"));
    EXPECT_EQ(ToDoubles(c->GetData()), (Doubles{1, 2, 3, 40, 50, 55, 6}));
}

TEST_F(JoinedFiles, ComeBackWhenTheMissingOneDoes)
{
    const QString away = disk.Path(QStringLiteral("away.h5"));
    ASSERT_TRUE(QFile::rename(runPath("all", 1), away));
    open();
    {
        const MessageCapture log;
        expectWithoutTheMiddle(*c, *s);
    }
    ASSERT_TRUE(QFile::rename(away, runPath("all", 1)));
    file->RetryReferences();
    expectAll();
}

TEST_F(JoinedFiles, OneOfWhichHasLostItsVariableFailThere)
{
    {
        const auto run = Open(runPath("all", 1), DataFile::ReadWrite);
        run->GetRoot()->DeleteProperty(V);
        insertFolder(*run->GetRoot(), QStringLiteral("w"));
        ASSERT_EQ(run->Save(), ER_SUCCESS);
    }
    open();
    const MessageCapture log;
    expectWithoutTheMiddle(*c, *s);
    EXPECT_EQ(log.warnings().filter(QStringLiteral("there is no /v in ") + runPath("all", 1)).size(), 1);
}

} // namespace
} // namespace Orrery
