// The trap idiom: what each answer of the error box does to the procedure.
#include <gtest/gtest.h>

#include <deque>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include "base/RuntimeError.h"
#include "base/Trap.h"

namespace {

struct Report {
    std::string module;
    std::string procedure;
    std::int32_t line;
    std::int32_t number;
    std::string description;
};

std::deque<std::int16_t> gAnswers;
std::vector<Report> gReports;
bool gReporterFails = false;

std::int16_t scriptedReporter(const std::string& module, const std::string& procedure,
                              std::int32_t line)
{
    gReports.push_back({module, procedure, line, rt::currentError().number,
                        rt::currentError().description});
    if (gReporterFails) rt::raise(rt::kErrPathFileAccess);
    const std::int16_t answer = gAnswers.empty() ? rt::kAnswerAbort : gAnswers.front();
    if (!gAnswers.empty()) gAnswers.pop_front();
    return answer;
}

class TrapTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        gAnswers.clear();
        gReports.clear();
        gReporterFails = false;
        rt::setErrorReporter(&scriptedReporter);
    }
    void TearDown() override { rt::setErrorReporter(nullptr); }

    // A procedure of three steps whose middle step fails `failures` times.
    std::vector<int> runThreeSteps(int failures, ErrorFlag& flag)
    {
        std::vector<int> ran;
        rt::Trap trap("modTest", "gThreeSteps", flag);
        trap.step([&] { ran.push_back(1); });
        trap.step([&] {
            ran.push_back(2);
            if (failures-- > 0) rt::raise(rt::kErrOverflow);
        });
        trap.step([&] { ran.push_back(3); });
        return ran;
    }
};

TEST_F(TrapTest, EachAnswerDecidesWhereTheProcedureGoesOn)
{
    struct Case {
        const char* name;
        std::deque<std::int16_t> answers;
        int failures;
        std::vector<int> ran;
        ErrorFlag flag;
    };
    const Case cases[] = {
        {"Retry runs the step again", {rt::kAnswerRetry, rt::kAnswerRetry}, 2, {1, 2, 2, 2, 3}, kFalse},
        {"Ignore goes on with the next step", {rt::kAnswerIgnore}, 1, {1, 2, 3}, kFalse},
        {"Abort sets the flag and skips the rest", {rt::kAnswerAbort}, 1, {1, 2}, kTrue},
        {"any other answer leaves without the flag", {1}, 1, {1, 2}, kFalse},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        gAnswers = c.answers;
        gReports.clear();
        ErrorFlag flag = kFalse;
        EXPECT_EQ(runThreeSteps(c.failures, flag), c.ran);
        EXPECT_EQ(flag, c.flag);
        ASSERT_EQ(gReports.size(), static_cast<std::size_t>(c.failures));
    }
    EXPECT_EQ(gReports[0].module, "modTest");
    EXPECT_EQ(gReports[0].procedure, "gThreeSteps");
    EXPECT_EQ(gReports[0].number, rt::kErrOverflow);
    EXPECT_EQ(gReports[0].description, "Overflow");
    EXPECT_GT(gReports[0].line, 0);
}

TEST_F(TrapTest, AbortWithoutAnErrorFlagStillLeaves)
{
    std::vector<int> ran;
    rt::Trap trap("modTest", "gNoFlag");
    trap.step([&] { rt::raise(rt::kErrSubscript); });
    trap.step([&] { ran.push_back(2); });
    EXPECT_TRUE(ran.empty());
    EXPECT_TRUE(trap.leaving());
}

TEST_F(TrapTest, ForeignExceptionsBecomeNumberedErrors)
{
    ErrorFlag flag = kFalse;
    gAnswers = {rt::kAnswerIgnore, rt::kAnswerIgnore, rt::kAnswerIgnore};
    rt::Trap trap("modTest", "gForeign", flag);
    trap.step([] { throw std::bad_alloc(); });
    trap.step([] { std::vector<int>().at(3); });
    trap.step([] { throw std::runtime_error("something odd"); });
    ASSERT_EQ(gReports.size(), 3u);
    EXPECT_EQ(gReports[0].number, rt::kErrOutOfMemory);
    EXPECT_EQ(gReports[1].number, rt::kErrSubscript);
    EXPECT_EQ(gReports[2].number, rt::kErrInvalidCall);
    EXPECT_EQ(gReports[2].description, "something odd");
}

TEST_F(TrapTest, AFailingReporterEndsTheProcedureWithItsOwnFailure)
{
    gReporterFails = true;
    ErrorFlag flag = kFalse;
    EXPECT_EQ(runThreeSteps(1, flag), (std::vector<int>{1, 2}));
    EXPECT_EQ(flag, kTrue);
    EXPECT_EQ(rt::currentError().number, rt::kErrPathFileAccess);
    EXPECT_EQ(gReports.size(), 1u);
}

TEST_F(TrapTest, LeaveSkipsTheRemainingStepsWithoutAFlag)
{
    ErrorFlag flag = kFalse;
    std::vector<int> ran;
    rt::Trap trap("modTest", "gEarlyExit", flag);
    trap.step([&] {
        ran.push_back(1);
        trap.leave();
    });
    EXPECT_FALSE(trap.step([&] { ran.push_back(2); }));
    EXPECT_EQ(ran, std::vector<int>{1});
    EXPECT_EQ(flag, kFalse);
    EXPECT_TRUE(gReports.empty());
}

}  // namespace
