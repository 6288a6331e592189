#include "devserver/FaultPlan.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zentavo::devserver {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

ScriptedFault fault(const std::string& query, std::vector<std::string>* problems = nullptr) {
    IncomingRequest request;
    request.setTarget("/_dev/fault?" + query);
    Problems found;
    ScriptedFault made = ScriptedFault::from(request.query, found);
    if (problems != nullptr) {
        *problems = found.list();
    } else {
        EXPECT_THAT(found.list(), IsEmpty()) << query;
    }
    return made;
}

std::string next(FaultPlan& plan, std::string_view path, Twin twin = Twin::production) {
    const auto taken = plan.take(twin, path);
    return taken ? taken->description() : "";
}

TEST(FaultPlan, FaultsAreUsedUpInOrderAsOftenAsTheySay) {
    FaultPlan plan;
    plan.add(fault("path=/event&status=500&times=2"));
    plan.add(fault("path=/other&status=501"));
    plan.add(fault("path=*&hang=1"));
    EXPECT_EQ(plan.list()[0], Value(Map{{"path", "/event"}, {"fault", "status=500"}, {"times", 2}}));
    EXPECT_EQ(next(plan, "/event"), "status=500");
    EXPECT_EQ(next(plan, "/other"), "status=501");
    EXPECT_EQ(next(plan, "/event"), "status=500");
    EXPECT_EQ(next(plan, "/event"), "hang=1");
    EXPECT_EQ(next(plan, "/event"), "");
    EXPECT_EQ(plan.size(), 0U);
}

TEST(FaultPlan, AServicePathMeansBothTwinsAndATwinsPathMeansOne) {
    FaultPlan plan;
    plan.add(fault("path=/sandbox/event&status=500"));
    EXPECT_EQ(next(plan, "/event"), "");
    EXPECT_EQ(next(plan, "/event", Twin::sandbox), "status=500");
    EXPECT_EQ(ServicePath::of("/sandboxed/event").twin, Twin::production);
    plan.add(fault("path=/event&status=501&times=2"));
    EXPECT_EQ(next(plan, "/event", Twin::sandbox), "status=501");
    EXPECT_EQ(next(plan, "/event"), "status=501");
}

TEST(FaultPlan, IsBounded) {
    FaultPlan plan;
    for (std::size_t i = 0; i < FaultPlan::maximum; ++i) {
        ASSERT_TRUE(plan.add(fault("path=/event&status=500")));
    }
    EXPECT_FALSE(plan.add(fault("path=/event&status=500")));
    plan.clear();
    EXPECT_EQ(plan.size(), 0U);
}

TEST(ScriptedFault, ParametersCombineAndAreSaidAgain) {
    EXPECT_EQ(fault("path=/event&status=503&delay=20&drip=5&body=%7B%20x").description(),
              "body=\"{ x\" status=503 delay=20 drip=5");
    EXPECT_EQ(fault("path=/event&reset=1&delay=1").description(), "reset=before delay=1");
    EXPECT_EQ(fault("path=/event&reset=mid&status=500").description(), "reset=mid status=500");
    EXPECT_EQ(fault("path=/event&redirect=/event&status=308").description(), "redirect=\"/event\" status=308");
    EXPECT_EQ(fault("path=/event&session_id=s1").description(), "session_id=\"s1\"");
}

TEST(ScriptedFault, WrongParametersAreAllNamed) {
    struct Case {
        const char* query;
        const char* problem;
    };
    const std::vector<Case> cases{
        {"status=500", "path is \"\"; expected a service's path"},
        {"path=/event", "nothing to go wrong"},
        {"path=/event&status=199", "status is \"199\"; expected a whole number from 200 to 599"},
        {"path=/event&status=5e2", "status is \"5e2\""},
        {"path=/event&hang=1&times=0", "times is \"0\""},
        {"path=/event&delay=600001", "delay is \"600001\""},
        {"path=/event&size=-1", "size is \"-1\""},
        {"path=/event&reset=maybe", "reset is \"maybe\"; expected one of 1, before, mid"},
        {"path=/event&hang=1&empty=1", "exclude each other"},
        {"path=/event&hang=1&status=500", "no status or drip without an answer"},
        {"path=/event&redirect=", "expected a URL"},
        {"path=/event&redirect=http://x/%0D%0AEvil:1", "expected a URL"},
        {"path=/event&redirect=/x&status=200", "from 300 to 399"},
        {"path=/event&hang=1&frequency=2", "parameter \"frequency\" is unknown here"},
        {"path=/event&hang=1&hang=1", "parameter \"hang\" comes more than once"},
    };
    for (const Case& each : cases) {
        std::vector<std::string> problems;
        fault(each.query, &problems);
        EXPECT_THAT(problems, ::testing::Contains(HasSubstr(each.problem))) << each.query;
    }
}

} // namespace
} // namespace zentavo::devserver
