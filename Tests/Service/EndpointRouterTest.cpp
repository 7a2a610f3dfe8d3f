#include "Simulator/Service/Http/EndpointRouter.h"

#include <gtest/gtest.h>

#include "Simulator/Service/Http/EndpointCall.h"

namespace vorlane::service {
namespace {

using Parameters = std::map<std::string, std::string>;

class EndpointRouterTest : public ::testing::Test {
protected:
    void add(const std::string& name, const std::string& method, const std::string& pattern) {
        router.add(name, method, pattern, [](EndpointCall&) { return ServiceResponse(); });
    }

    EndpointRouter::Match match(const std::string& method, const std::string& target) const {
        return router.match(ServiceRequest::make(method, target));
    }

    std::string nameOf(const std::string& method, const std::string& target) const {
        const auto found = match(method, target);
        return found.endpoint ? found.endpoint->name : "none";
    }

    EndpointRouter router;
};

TEST_F(EndpointRouterTest, AnEmptyTableMatchesNoRequest) { EXPECT_EQ(nameOf("GET", "/"), "none"); }

TEST_F(EndpointRouterTest, PathsAreComparedCompletely) {
    add("a", "GET", "/x/y");
    EXPECT_EQ(nameOf("GET", "/x/y"), "a");
    for (const char* target : {"/x", "/x/y/", "/x/y/z", "/X/y", "//x/y", "/x//y", "/", ""})
        EXPECT_EQ(nameOf("GET", target), "none") << target;
}

TEST_F(EndpointRouterTest, TheQueryDoesNotMatter) {
    add("a", "GET", "/x");
    EXPECT_EQ(nameOf("GET", "/x?a=/y"), "a");
    EXPECT_EQ(nameOf("GET", "/x?"), "a");
}

TEST_F(EndpointRouterTest, PartsAreComparedDecoded) {
    add("a", "GET", "/x y/*");
    EXPECT_EQ(nameOf("GET", "/x%20y/%2a"), "a");
    EXPECT_EQ(nameOf("GET", "/x%20y%2F*"), "none");
}

TEST_F(EndpointRouterTest, NamesMatchOneNonemptyPart) {
    add("a", "GET", "/{first}/b/{second}");
    EXPECT_EQ(match("GET", "/1%2F2/b/3").parameters, (Parameters{{"first", "1/2"}, {"second", "3"}}));
    EXPECT_EQ(nameOf("GET", "//b/3"), "none");
    EXPECT_EQ(nameOf("GET", "/1/b/"), "none");
}

TEST_F(EndpointRouterTest, LongNamesMatchAsFewPartsAsPossible) {
    add("a", "GET", "/u/{user*}/t/{tag*}");
    EXPECT_EQ(match("GET", "/u/1/2/t/3/t/4").parameters, (Parameters{{"user", "1/2"}, {"tag", "3/t/4"}}));
    EXPECT_EQ(match("GET", "/u/t/t/t").parameters, (Parameters{{"user", "t"}, {"tag", "t"}}));
    EXPECT_EQ(match("GET", "/u/1/t//").parameters, (Parameters{{"user", "1"}, {"tag", "/"}}));
    EXPECT_EQ(nameOf("GET", "/u/1/t/"), "none");
    EXPECT_EQ(nameOf("GET", "/u/1"), "none");
}

TEST_F(EndpointRouterTest, TheFirstMatchApplies) {
    add("special", "GET", "/x/y");
    add("general", "GET", "/x/{name}");
    EXPECT_EQ(nameOf("GET", "/x/y"), "special");
    EXPECT_EQ(nameOf("GET", "/x/z"), "general");
}

TEST_F(EndpointRouterTest, OtherMethodsOfThePathAreReported) {
    add("a", "GET", "/x");
    add("b", "PUT", "/{name}");
    EXPECT_EQ(match("POST", "/x").otherMethods, (std::set<std::string>{"GET", "PUT"}));
    EXPECT_EQ(match("GET", "/y").otherMethods, std::set<std::string>{"PUT"});
    EXPECT_TRUE(match("GET", "/x").otherMethods.empty());
    EXPECT_EQ(nameOf("get", "/x"), "none");
}

TEST_F(EndpointRouterTest, OnlyAppEndpointsHaveNamesForFaults) {
    add("a", "GET", "/x");
    router.addAdministrative("b", "GET", "/y", nullptr);
    EXPECT_TRUE(router.hasName("a"));
    EXPECT_FALSE(router.hasName("b"));
    EXPECT_FALSE(router.hasName("c"));
}

}  // namespace
}  // namespace vorlane::service
