#include "solve/language/parse.h"

#include <array>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace varno::solve {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// A text that was read, with its expressions in a form that shows how they were grouped.
struct Parsed {
  explicit Parsed(std::string text) : source(sources.Add("f", std::move(text)))
  {
    syntax = ParseProblem(sources, source, diagnostics);
  }

  std::string Grouped(ExpressionId id) const
  {
    const Expression& expression = syntax[id];
    std::string text(sources.Text(expression.name));
    if (expression.kind == ExpressionKind::kName) return text + std::string(expression.order, '\'');
    if (expression.operandCount == 0) return text;
    if (expression.kind == ExpressionKind::kSegment) text = ":";
    text = "(" + text;
    for (const ExpressionId operand : syntax.Operands(id)) text += " " + Grouped(operand);
    return text + ")";
  }
  std::string Right(std::size_t i = 0) const { return Grouped(syntax.equations.at(i).right); }
  std::string_view Text(Place place) const { return sources.Text(place); }

  std::vector<std::string> Errors() const
  {
    std::vector<std::string> errors;
    for (const Diagnostic& diagnostic : diagnostics.All()) {
      errors.push_back(diagnostic.message +
                       (diagnostic.hint.empty() ? "" : " (" + diagnostic.hint + ")"));
    }
    return errors;
  }

  Sources sources;
  std::uint32_t source;
  Diagnostics diagnostics;
  Syntax syntax;
};

std::string Grouped(const std::string& expression)
{
  const Parsed parsed("x = " + expression + ";");
  if (parsed.diagnostics.HasErrors()) return Render(parsed.diagnostics, parsed.sources);
  return parsed.Right();
}

// ------------------------------------------------------------------------------
// Grouping

TEST(Parse, OperatorsGroupAsInMathematics)
{
  EXPECT_EQ(Grouped("a - b - c"), "(- (- a b) c)");
  EXPECT_EQ(Grouped("a/b/c"), "(/ (/ a b) c)");
  EXPECT_EQ(Grouped("a - b*c"), "(- a (* b c))");
  EXPECT_EQ(Grouped("-a*b"), "(* (- a) b)");
  EXPECT_EQ(Grouped("-x^2"), "(- (^ x 2))");
  EXPECT_EQ(Grouped("2^-x"), "(^ 2 (- x))");
  EXPECT_EQ(Grouped("2^-x*3"), "(* (^ 2 (- x)) 3)");
  EXPECT_EQ(Grouped("2^-x^2"), "(^ 2 (- (^ x 2)))");
  EXPECT_EQ(Grouped("a^b^c"), "(^ a (^ b c))");
  EXPECT_EQ(Grouped("(a^b)^c"), "(^ (^ a b) c)");
  EXPECT_EQ(Grouped("a*-b"), "(* a (- b))");
  EXPECT_EQ(Grouped("--a"), "(- (- a))");
  EXPECT_EQ(Grouped("+a + +b"), "(+ a b)");
  EXPECT_EQ(Grouped("-sin(a)^2"), "(- (^ (sin a) 2))");
}

TEST(Parse, ConditionsGroupBelowSums)
{
  EXPECT_EQ(Grouped("if(a + 1 < b*2 and c > 1 or not d <= e, 1, 2)"),
            "(if (or (and (< (+ a 1) (* b 2)) (> c 1)) (not (<= d e))) 1 2)");
  EXPECT_EQ(Grouped("if(not a < b and c >= d, 1, 2)"), "(if (and (not (< a b)) (>= c d)) 1 2)");
  EXPECT_EQ(Grouped("if(a < b or c < d and e < f, 1, 2)"),
            "(if (or (< a b) (and (< c d) (< e f))) 1 2)");
}

TEST(Parse, StepFunctions)
{
  EXPECT_EQ(Grouped("[t < 1, 2 : 3; 4 : 5]"), "(< t (: 1 2 3) (: 4 5))");
  EXPECT_EQ(Grouped("2*[y' < -1 : 2*k]"), "(* 2 (< y' (: (- 1) (* 2 k))))");
}

TEST(Parse, Statements)
{
  const Parsed parsed(
      "y'' = -y & 1; k = 2; y'(0) = 3; function f(u, v) = u; event e: y falling stop; event b: y { "
      "y = 1; z' = 2; };"
      "event c: y rising { y = 3 };");
  EXPECT_THAT(parsed.Errors(), IsEmpty());
  const Syntax& syntax = parsed.syntax;
  ASSERT_EQ(syntax.equations.size(), 2U);
  EXPECT_EQ(syntax.equations[0].head.order, 2U);
  EXPECT_EQ(parsed.Grouped(*syntax.equations[0].start), "1");
  EXPECT_EQ(syntax.equations[1].head.order, 0U);
  EXPECT_FALSE(syntax.equations[1].start.has_value());
  ASSERT_EQ(syntax.starts.size(), 1U);
  EXPECT_EQ(syntax.starts[0].head.order, 1U);
  EXPECT_EQ(parsed.Grouped(syntax.starts[0].value), "3");
  ASSERT_EQ(syntax.functions.size(), 1U);
  EXPECT_EQ(syntax.functions[0].parameters.size(), 2U);
  ASSERT_EQ(syntax.events.size(), 3U);
  EXPECT_TRUE(syntax.events[0].stops);
  EXPECT_EQ(syntax.events[0].crossing, Crossing::kFalling);
  EXPECT_EQ(syntax.events[1].crossing, Crossing::kBoth);
  EXPECT_EQ(syntax.events[1].assignments.size(), 2U);
  EXPECT_EQ(syntax.events[2].crossing, Crossing::kRising);
  EXPECT_EQ(syntax.events[2].assignments.size(), 1U);
}

TEST(Parse, PlacesCoverWhatWasWritten)
{
  const Parsed parsed("x = a + (b*c);");
  const ExpressionId sum = parsed.syntax.equations[0].right;
  EXPECT_EQ(parsed.Text(parsed.syntax[sum].place), "a + (b*c)");
  EXPECT_EQ(parsed.Text(parsed.syntax[parsed.syntax.Operands(sum)[1]].place), "(b*c)");
  EXPECT_EQ(parsed.Text(parsed.syntax[sum].name), "+");
}

TEST(Parse, Expressions)
{
  Sources sources;
  Diagnostics diagnostics;
  const Syntax syntax = ParseExpression(sources, sources.Add("--to", "10*pi"), diagnostics);
  EXPECT_FALSE(diagnostics.HasErrors());
  ASSERT_TRUE(syntax.expression.has_value());
  EXPECT_EQ(syntax[*syntax.expression].kind, ExpressionKind::kMultiply);
}

TEST(Parse, Settings)
{
  Sources sources;
  Diagnostics diagnostics;
  Syntax syntax;
  ParseSetting(sources, sources.Add("--set", "mu=7"), syntax, diagnostics);
  ParseSetting(sources, sources.Add("--set", "y'(0) = 1/3"), syntax, diagnostics);
  EXPECT_FALSE(diagnostics.HasErrors());
  EXPECT_EQ(syntax.settings.size(), 1U);
  EXPECT_EQ(syntax.starts.size(), 1U);
}

// ------------------------------------------------------------------------------
// Mistakes

std::string ErrorOf(const std::string& statement)
{
  const std::vector<std::string> errors = Parsed(statement).Errors();
  return errors.size() == 1 ? errors[0] : "errors: " + std::to_string(errors.size());
}

TEST(Parse, HabitsFromElsewhere)
{
  const std::string expectedInExpression = ", expected an operator or '&' or ';'";
  EXPECT_EQ(ErrorOf("x' = y**2;"),
            "unexpected '**'" + expectedInExpression + " (powers are written x^y)");
  EXPECT_EQ(ErrorOf("x' = 2x;"),
            "unexpected name 'x'" + expectedInExpression + " (a product is written with '*': 2*x)");
  EXPECT_EQ(ErrorOf("x' = 2 (x + 1);"),
            "unexpected '('" + expectedInExpression + " (a product is written with '*': 2*(...))");
  EXPECT_EQ(ErrorOf("x' = sin t;"), "unexpected 't'" + expectedInExpression +
                                        " (an argument stands in parentheses: sin(t))");
  EXPECT_EQ(ErrorOf("x' == x;"),
            "unexpected '==', expected '=' or '(' (an equation is written with one '=')");
  EXPECT_EQ(ErrorOf("x' = (x)(y);"), "unexpected '('" + expectedInExpression +
                                         " (a product is written with '*', as in 2*x)");
  EXPECT_EQ(ErrorOf("x' = if(a < b && c < d, 1, 2);"),
            "unexpected '&&', expected an operator or ',' or ')' (write and)");
  EXPECT_EQ(ErrorOf("x' = if(a < b || c < d, 1, 2);"),
            "unexpected '||', expected an operator or ',' or ')' (write or)");
  EXPECT_EQ(ErrorOf("x' = if(!a, 1, 2);"), "unexpected '!', expected an expression (write not)");
  EXPECT_EQ(
      ErrorOf("x' = if(a == b, 1, 2);"),
      "unexpected '==', expected an operator or ',' or ')' (comparisons are <, <=, > and >=)");
  EXPECT_EQ(ErrorOf("x' = if(a = b, 1, 2);"),
            "unexpected '=', expected an operator or ',' or ')' (comparisons are <, <=, > "
            "and >=; '=' stands in statements only)");
  EXPECT_EQ(ErrorOf("dx/dt = y;"),
            "unexpected '/', expected '=' or '(' (the derivative of x is written x' = ...)");
  EXPECT_EQ(ErrorOf("d/dt = y;"),
            "unexpected '/', expected '=' or '(' (the derivative of x is written x' = ...)");
  EXPECT_EQ(ErrorOf("par mu = 3;"),
            "unexpected name 'mu', expected '=' or '(' (a parameter is written mu = 3;)");
  EXPECT_EQ(ErrorOf("x := 3;"), "unexpected ':=', expected '=' or '(' (write =)");
  EXPECT_EQ(ErrorOf("# comment\nx = 3;"), "unexpected '#' (comments begin with //)");
  EXPECT_EQ(ErrorOf("x' = y % 2;"),
            "unexpected '%'" + expectedInExpression +
                " (comments begin with //; the remainder of a by b is a - b*floor(a/b))");
  EXPECT_EQ(ErrorOf("x' = 1,5;"),
            "unexpected ','" + expectedInExpression + " (decimals are written with a point: 1.5)");
  EXPECT_EQ(ErrorOf("x' = y[1];"),
            "unexpected '['" + expectedInExpression + " (names have no indices; write x1, x2)");
  EXPECT_EQ(ErrorOf("x\" = y;"),
            "unexpected '\"', expected '=' or '(' (derivatives are marked with the apostrophe ', "
            "as in y' and y'')");
  EXPECT_EQ(ErrorOf("x\u2019 = y;"),
            "unexpected '\u2019', expected '=' or '(' (derivatives are marked with the apostrophe "
            "', as in y' and y'')");
  EXPECT_EQ(ErrorOf("x' = y\u00b2;"),
            "unexpected '\u00b2'" + expectedInExpression + " (powers are written x^2)");
  EXPECT_EQ(
      ErrorOf("x' = \u2212y;"),
      "unexpected '\u2212', expected an expression (write the minus sign of the keyboard, -)");
  EXPECT_EQ(ErrorOf("x' = y'(0);"),
            "unexpected '('" + expectedInExpression +
                " (a start value cannot be read back; give it a name: v0 = 1; y'(0) = v0;)");
}

TEST(Parse, OpenBracketsAreNamed)
{
  EXPECT_EQ(ErrorOf("x' = 2*(y + 1;"),
            "unexpected end of the statement, expected an operator or ')' (the '(' of line 1, "
            "column 8 is not closed)");
  EXPECT_EQ(ErrorOf("x' = sin(y;"),
            "unexpected end of the statement, expected an operator or ',' or ')' (the '(' of line "
            "1, column 9 is not closed)");
  EXPECT_EQ(ErrorOf("x' = [t < 1 : 2;\ny' = 3;"),
            "unexpected end of the statement, expected an operator or ']' or ';' (the '[' of line "
            "1, column 6 is not closed)");
  EXPECT_EQ(
      ErrorOf("x' = (y];"),
      "unexpected ']', expected an operator or ')' (the '(' of line 1, column 6 is not closed)");
  EXPECT_EQ(ErrorOf("x' = y);"), "unexpected ')', expected an operator or '&' or ';'");
}

TEST(Parse, EndsOfTheText)
{
  EXPECT_EQ(ErrorOf("x' = y"),
            "unexpected end of the text, expected an operator or '&' or ';' "
            "(a statement ends with ';', the last one too)");
  EXPECT_EQ(ErrorOf("x' ="), "unexpected end of the text, expected an expression");
  EXPECT_EQ(ErrorOf("x"), "unexpected end of the text, expected '=' or '('");
  // The place is right after the last token, not after the blank lines.
  const Parsed parsed("x' = y\n\n\n");
  EXPECT_EQ(parsed.diagnostics.All().at(0).place, (Place{parsed.source, 6, 6}));
}

TEST(Parse, EmptyStatementsAreMistakes)
{
  EXPECT_EQ(ErrorOf(";"),
            "unexpected end of the statement, expected a statement, as in y' = expression;");
}

TEST(Parse, WordsOfEvents)
{
  EXPECT_THAT(ErrorOf("event e: y sideways;"), HasSubstr("unexpected 'sideways' in an event"));
  EXPECT_THAT(ErrorOf("event e: y rising falling;"), HasSubstr("unexpected 'falling' in an event"));
  EXPECT_THAT(ErrorOf("event e: y stop stop;"), HasSubstr("unexpected 'stop' in an event"));
  EXPECT_EQ(ErrorOf("event e y;"), "unexpected name 'y', expected ':'");
}

TEST(Parse, ParametersOfFunctions)
{
  EXPECT_EQ(ErrorOf("function f(u, u) = 1;"), "two parameters of this function are named 'u'");
  EXPECT_EQ(ErrorOf("function f(t) = 1;"),
            "'t' is the time and cannot be defined (choose another name)");
  EXPECT_EQ(ErrorOf("function f() = 1;"), "unexpected ')', expected a name");
}

TEST(Parse, SegmentsHaveAtMostTwoLimits)
{
  EXPECT_EQ(ErrorOf("x = [t < 1, 2, 3 : 4];"),
            "a segment of a step function has at most two limits (a, b : v is v for a <= t < b)");
}

TEST(Parse, OrdersHaveALimit)
{
  EXPECT_THAT(Parsed("x'10000 = 1;").Errors(), IsEmpty());
  EXPECT_EQ(ErrorOf("x'10001 = 1;"), "derivative order too large (the highest order is 10000)");
  EXPECT_EQ(ErrorOf("x'99999999999999999999 = 1;"),
            "derivative order too large (the highest order is 10000)");
}

TEST(Parse, AllMistakesInOneRun)
{
  const Parsed parsed("a = 2x;\nb = 3;\nc = (1;\nd = 4 e = 5;\nf = 1,2;\ng = [t < 2 : ;\nh = 7;\n");
  EXPECT_EQ(parsed.Errors().size(), 5U) << Render(parsed.diagnostics, parsed.sources);
  std::vector<std::string> names;
  for (const EquationStatement& equation : parsed.syntax.equations) {
    names.emplace_back(parsed.Text(equation.head.name));
  }
  EXPECT_THAT(names, ElementsAre("b", "d", "e", "h"));
}

TEST(Parse, TheTreeIsContiguousAfterMistakes)
{
  const Parsed parsed("a = 1 + 2 + (3;\nb = x*y + sin(z);\n");
  EXPECT_EQ(parsed.Right(), "(+ (* x y) (sin z))");
  const Expression& root = parsed.syntax[parsed.syntax.equations[0].right];
  EXPECT_EQ(parsed.syntax.equations[0].right - root.first, 5U);
}

// ------------------------------------------------------------------------------
// Size

std::string Repeated(std::string_view text, int count)
{
  std::string result;
  for (int i = 0; i < count; ++i) result += text;
  return result;
}

TEST(Parse, DepthIsNoLimit)
{
  constexpr int kDepth = 100000;
  const std::array texts = {
      "x = " + Repeated("(", kDepth) + "y" + Repeated(")", kDepth) + ";",
      "x = " + Repeated("sin(", kDepth) + "y" + Repeated(")", kDepth) + ";",
      "x = " + Repeated("-", kDepth) + "y;",
      "x = " + Repeated("y^", kDepth) + "y;",
      "x = " + Repeated("y + ", kDepth) + "y;",
      "x = " + Repeated("y*(y + ", kDepth) + "y" + Repeated(")", kDepth) + ";",
      "x = " + Repeated("[t < ", kDepth) + "1 : 2]" + Repeated(" : 3]", kDepth - 1) + ";",
      "x = " + Repeated("if(not ", kDepth) + "y < 1" + Repeated(", 1, 2) < 1", kDepth - 1) +
          ", 1, 2);",
      "x = min(1" + Repeated(", y", kDepth) + ");",
  };
  for (const std::string& text : texts) {
    const Parsed parsed(text);
    EXPECT_FALSE(parsed.diagnostics.HasErrors())
        << text.substr(0, 20) << Render(parsed.diagnostics, parsed.sources).substr(0, 2000);
  }
}

TEST(Parse, MistakesAtAnyDepth)
{
  const Parsed parsed("x = " + Repeated("(", 100000) + ";\ny = " + Repeated("sin(", 100000) +
                      "2x;\nz = 3;");
  EXPECT_EQ(parsed.Errors().size(), 2U);
  EXPECT_EQ(parsed.syntax.equations.size(), 1U);
}

TEST(Parse, GarbageEndsInMessages)
{
  std::mt19937 random(12345);
  for (int run = 0; run < 200; ++run) {
    std::string bytes(1 + random() % 2000, '\0');
    for (char& byte : bytes) byte = static_cast<char>(random());
    const Parsed parsed(bytes);
    EXPECT_TRUE(parsed.diagnostics.HasErrors());
    EXPECT_FALSE(Render(parsed.diagnostics, parsed.sources).empty());
  }
}

TEST(Parse, NulBytesAreReported)
{
  EXPECT_EQ(ErrorOf(std::string("x = 1\0;", 7)),
            "unexpected byte 0, expected an operator or '&' or ';'");
}

}  // namespace
}  // namespace varno::solve
