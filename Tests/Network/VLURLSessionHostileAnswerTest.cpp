#include <cstddef>
#include <string>
#include <vector>

#include "Network/VLURLSession.h"
#include "Public/VLErrorDomains.h"
#include "Tests/Network/NetworkTestSupport.h"
#include "Tests/Support/SimulatedPhoneTest.h"

namespace vorlane {
namespace {

/// Hostile bodies, received through the JSON operations.
class VLURLSessionHostileAnswerTest : public SimulatedPhoneTest {
protected:
    JSONAnswer answerTo(const std::string& body, std::int64_t status = 200) {
        std::vector<JSONAnswer> answers;
        urlSession.GETJSON(url, into(answers));
        session().answer("h.test", status, body);
        // Under a sanitizer a large body takes longer than the default limit.
        EXPECT_TRUE(phone().settle(100.0));
        EXPECT_EQ(answers.size(), 1u);
        return answers.empty() ? JSONAnswer{} : answers.front();
    }

    static std::string nestedArrays(std::size_t depth) {
        return R"({"a":)" + std::string(depth, '[') + std::string(depth, ']') + "}";
    }

    void expectUnreadable(const std::string& body) {
        const JSONAnswer answer = answerTo(body);
        EXPECT_FALSE(answer.result);
        EXPECT_EQ(answer.status, 200);
        ASSERT_TRUE(answer.error);
        EXPECT_EQ(answer.error->domain(), NSCocoaErrorDomain);
        EXPECT_EQ(answer.error->code(), NSPropertyListReadCorruptError);
    }

    const NSURL url = urlOf("https://h.test/");
    VLURLSession urlSession{phone().makeURLSession({10.0}), phone().application()};
};

TEST_F(VLURLSessionHostileAnswerTest, TextThatIsNotJSONIsAnError) {
    for (const char* body : {"not JSON", "<html></html>", "{", "}", "{\"a\":}", "{\"a\":1,}", "{'a':1}", "{} x", " ",
                             "\n", "{\"a\":NaN}", "{\"a\":01}", "//{}", "{\"a\":\"\\ud800\"}"}) {
        SCOPED_TRACE(body);
        expectUnreadable(body);
    }
}

TEST_F(VLURLSessionHostileAnswerTest, JSONWithoutATopLevelObjectIsAnError) {
    for (const char* body : {"[]", "[{}]", "1", "-1.5e3", "null", "true", "\"text\""}) {
        SCOPED_TRACE(body);
        expectUnreadable(body);
    }
}

TEST_F(VLURLSessionHostileAnswerTest, AnEmptyBodyIsTheEmptyTextError) {
    const JSONAnswer answer = answerTo("");
    EXPECT_FALSE(answer.result);
    EXPECT_EQ(answer.status, 200);
    ASSERT_TRUE(answer.error);
    EXPECT_EQ(answer.error->domain(), VLErrorDomainNetwork);
    EXPECT_EQ(answer.error->code(), 0);
}

TEST_F(VLURLSessionHostileAnswerTest, ABodyThatIsNotUTF8IsTheEmptyTextError) {
    for (const std::string body :
         {"{\"a\":\"\xFF\"}", "{\"a\":\"\xC0\xAF\"}", "{\"a\":\"\xED\xA0\x80\"}", "\xFF\xFE{}"}) {
        const JSONAnswer answer = answerTo(body);
        EXPECT_FALSE(answer.result);
        EXPECT_EQ(answer.status, 200);
        ASSERT_TRUE(answer.error);
        EXPECT_EQ(answer.error->domain(), VLErrorDomainNetwork);
        EXPECT_EQ(answer.error->code(), 0);
    }
}

TEST_F(VLURLSessionHostileAnswerTest, Nesting200DeepIsRead) {
    const JSONAnswer answer = answerTo(nestedArrays(200));
    ASSERT_TRUE(answer.result);
    std::size_t depth = 0;
    for (const Value* value = &answer.result->at("a"); value->is_array(); ++depth) {
        if (value->empty()) break;
        value = &value->front();
    }
    EXPECT_EQ(depth + 1, 200u);
}

TEST_F(VLURLSessionHostileAnswerTest, Nesting100000DeepIsAnError) {
    expectUnreadable(nestedArrays(100'000));
    expectUnreadable(std::string(100'000, '['));
    std::string objects;
    for (int i = 0; i < 100'000; ++i) objects += R"({"a":)";
    expectUnreadable(objects);
}

TEST_F(VLURLSessionHostileAnswerTest, ABodyOf40MebibytesIsRead) {
    VLLog::sharedInstance().setLogLevel(VLLogLevel::Info);
    const std::string big(40u << 20, 'x');
    const JSONAnswer answer = answerTo(R"({"a":")" + big + R"("})");
    ASSERT_TRUE(answer.result);
    EXPECT_TRUE(answer.result->at("a") == Value(big));
    EXPECT_FALSE(answer.error);
}

TEST_F(VLURLSessionHostileAnswerTest, OnlyAnEscapedNulIsAccepted) {
    expectUnreadable(std::string("{}\0", 3));
    expectUnreadable(std::string("\0{}", 3));
    expectUnreadable(std::string("{\"a\":\"x\0y\"}", 11));
    EXPECT_EQ(answerTo(R"({"a":"x\u0000y"})").result, (Dictionary{{"a", std::string("x\0y", 3)}}));
}

TEST_F(VLURLSessionHostileAnswerTest, OneOfTwoEqualKeysIsKept) {
    const JSONAnswer answer = answerTo(R"({"a":1,"b":3,"a":2})");
    ASSERT_TRUE(answer.result);
    EXPECT_FALSE(answer.error);
    EXPECT_EQ(*answer.result, (Dictionary{{"a", 2}, {"b", 3}}));
}

TEST_F(VLURLSessionHostileAnswerTest, NumbersOutOfRangeAreRead) {
    const JSONAnswer huge = answerTo(R"({"a":123456789012345678901234567890,"b":-9223372036854775808})");
    ASSERT_TRUE(huge.result);
    EXPECT_TRUE(huge.result->at("a").is_number());
    const JSONAnswer infinite = answerTo(R"({"a":1e999})");
    EXPECT_NE(infinite.result.has_value(), infinite.error.has_value());
}

TEST_F(VLURLSessionHostileAnswerTest, TheBodyOfAFailureIsNotParsed) {
    const JSONAnswer answer = answerTo(std::string(100'000, '['), 500);
    EXPECT_FALSE(answer.result);
    EXPECT_EQ(answer.status, 500);
    ASSERT_TRUE(answer.error);
    EXPECT_EQ(answer.error->code(), 500);
}

}  // namespace
}  // namespace vorlane
