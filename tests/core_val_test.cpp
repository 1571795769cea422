// Val reads every number a user types and every count the collection loop reads back from a
// box. Its quick path for whole numbers must agree with the general scan on any text.
#include <gtest/gtest.h>

#include <QString>

#include <cmath>
#include <cstdlib>
#include <random>
#include <string>

#include "core/VbText.h"

namespace lxm::test {
namespace {

// The language's rule spelled out plainly: blanks, an optional sign, digits with at most one
// point, then an exponent only when it has digits; whatever follows is ignored.
double SlowVal(const QString& text) {
    const std::string s = text.trimmed().toLatin1().toStdString();
    std::size_t i = 0;
    std::string num;
    auto isDigit = [&](std::size_t k) { return k < s.size() && s[k] >= '0' && s[k] <= '9'; };
    if (i < s.size() && (s[i] == '+' || s[i] == '-')) num += s[i++];
    bool digits = false;
    while (isDigit(i)) num += s[i++], digits = true;
    if (i < s.size() && s[i] == '.') {
        num += s[i++];
        while (isDigit(i)) num += s[i++], digits = true;
    }
    if (!digits) return 0;
    if (i < s.size() && (s[i] == 'e' || s[i] == 'E')) {
        std::size_t j = i + 1;
        std::string exp = "e";
        if (j < s.size() && (s[j] == '+' || s[j] == '-')) exp += s[j++];
        bool expDigits = false;
        while (isDigit(j)) exp += s[j++], expDigits = true;
        if (expDigits) num += exp;
    }
    return std::strtod(num.c_str(), nullptr);
}

bool Same(double a, double b) {
    return (std::isnan(a) && std::isnan(b)) || (a == b && std::signbit(a) == std::signbit(b));
}

TEST(Val, ReadsTheLeadingNumberAndIgnoresTheRest) {
    EXPECT_EQ(Val(QStringLiteral("  42 lux")), 42);
    EXPECT_EQ(Val(QStringLiteral("-17")), -17);
    EXPECT_EQ(Val(QStringLiteral("+3.25x")), 3.25);
    EXPECT_EQ(Val(QStringLiteral(".5")), 0.5);
    EXPECT_EQ(Val(QStringLiteral("5.")), 5);
    EXPECT_EQ(Val(QStringLiteral("1e3")), 1000);
    EXPECT_EQ(Val(QStringLiteral("1e")), 1) << "an exponent without digits is not part of the number";
    EXPECT_EQ(Val(QStringLiteral("2E-2")), 0.02);
    EXPECT_EQ(Val(QStringLiteral("Saturated")), 0);
    EXPECT_EQ(Val(QStringLiteral("-")), 0);
    EXPECT_EQ(Val(QString()), 0);
    EXPECT_EQ(Val(QStringLiteral("\u0661\u0662")), 0) << "only ASCII digits count";
    EXPECT_TRUE(std::isinf(Val(QStringLiteral("1e309"))));
    EXPECT_TRUE(std::signbit(Val(QStringLiteral("-0"))));
}

TEST(Val, WholeNumbersAroundTheExactLimitRoundAsTheGeneralScanDoes) {
    for (const char* text : {"999999999999999", "9999999999999999", "9007199254740993", "-9007199254740993",
                             "123456789012345678901234567890", "000000000000000000001"})
        EXPECT_TRUE(Same(Val(QString::fromLatin1(text)), SlowVal(QString::fromLatin1(text)))) << text;
}

TEST(Val, AgreesWithThePlainRuleOnRandomText) {
    const char alphabet[] = " +-.eE0123456789x\t";
    std::mt19937 rng(20261122);
    std::uniform_int_distribution<int> length(0, 24);
    std::uniform_int_distribution<int> pick(0, int(sizeof alphabet) - 2);
    for (int n = 0; n < 50000; ++n) {
        QString text;
        for (int k = length(rng); k > 0; --k) text += QLatin1Char(alphabet[pick(rng)]);
        ASSERT_TRUE(Same(Val(text), SlowVal(text))) << text.toStdString();
    }
}

// Trim and Str write every count the loop shows; whole numbers take a path of their own.
TEST(Trim, WholeNumbersAsDigitsAndTheRestWithFifteenSignificantDigits) {
    EXPECT_EQ(Trim(42), "42");
    EXPECT_EQ(Trim(-7), "-7");
    EXPECT_EQ(Trim(-0.0), "0");
    EXPECT_EQ(Trim(999999999999999.0), "999999999999999");
    EXPECT_EQ(Trim(-999999999999999.0), "-999999999999999");
    EXPECT_EQ(Trim(1e15), "1e+15");
    EXPECT_EQ(Trim(2.5), "2.5");
    EXPECT_EQ(Trim(1.0 / 3), "0.333333333333333");
    EXPECT_EQ(Str(5), " 5");
    EXPECT_EQ(Str(-5), "-5");
}

}  // namespace
}  // namespace lxm::test
