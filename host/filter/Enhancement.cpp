#include "host/filter/Enhancement.h"

#include <charconv>
#include <cmath>
#include <stdexcept>

namespace {

constexpr double kLargestCoefficient = 8.0;
constexpr double kLargestGain = 1000.0;
constexpr double kLargestGamma = 100.0;
constexpr double kLargestClip = 1e6;
constexpr std::uint32_t kLargestShift = 16;

std::vector<std::string> fields(std::string const& text) {
    std::vector<std::string> result(1);
    for (char const c : text) {
        if (c == ',')
            result.emplace_back();
        else
            result.back() += c;
    }
    return result;
}

// Parses the whole field as a number, in the C locale.
template <class Number>
bool parse(std::string const& field, Number& number) {
    auto const [end, error] = std::from_chars(field.data(), field.data() + field.size(), number);
    return error == std::errc() && end == field.data() + field.size() && !field.empty();
}

double real(std::string const& text, std::string const& field, double smallest, double largest,
            std::string const& form) {
    double number = 0.0;
    if (!parse(field, number) || !(number >= smallest && number <= largest))
        throw std::invalid_argument("\"" + text + "\" is not " + form);
    return number;
}

std::uint64_t whole(std::string const& text, std::string const& field, std::uint64_t largest, std::string const& form) {
    std::uint64_t number = 0;
    if (!parse(field, number) || number > largest) throw std::invalid_argument("\"" + text + "\" is not " + form);
    return number;
}

} // namespace

namespace enhancement {

Sharpen parseSharpen(std::string const& text) {
    return {real(text, text, -kLargestGain, kLargestGain, "a gain from -1000 to 1000")};
}

ColourMatrix parseColourMatrix(std::string const& text) {
    std::string const form = "nine numbers from -8 to 8 and perhaps a strength, M1,...,M9[,STRENGTH]";
    std::vector<std::string> const numbers = fields(text);
    ColourMatrix matrix;
    size_t const count = matrix.rows.size();
    if (numbers.size() != count && numbers.size() != count + 1)
        throw std::invalid_argument("\"" + text + "\" is not " + form);
    for (size_t i = 0; i < count; ++i)
        matrix.rows[i] = real(text, numbers[i], -kLargestCoefficient, kLargestCoefficient, form);
    if (numbers.size() > count)
        matrix.strength = real(text, numbers[count], -kLargestCoefficient, kLargestCoefficient, form);
    for (double const coefficient : matrix.rows) {
        if (std::abs(coefficient * matrix.strength) >= kLargestCoefficient)
            throw std::invalid_argument("\"" + text +
                                        "\" is not a matrix whose coefficients stay below 8 with the strength");
    }
    return matrix;
}

Gamma parseGamma(std::string const& text) {
    std::string const form = "a gamma above 0 and two codes from 0 to 65535, G,BLACK,WHITE";
    std::vector<std::string> const numbers = fields(text);
    if (numbers.size() != 3) throw std::invalid_argument("\"" + text + "\" is not " + form);
    constexpr double kSmallestGamma = 0.01;
    return {real(text, numbers[0], kSmallestGamma, kLargestGamma, form), whole(text, numbers[1], kLargestCode, form),
            whole(text, numbers[2], kLargestCode, form)};
}

Equalise parseEqualise(std::string const& text) {
    return {real(text, text, 1.0, kLargestClip, "a clip limit of at least 1")};
}

Truncate parseTruncate(std::string const& text) {
    std::string const form = "a number of bits from 0 to 16 and perhaps the word round, BITS[,round]";
    std::vector<std::string> const words = fields(text);
    bool const rounding = words.size() == 2 && words[1] == "round";
    if (words.size() > 2 || (words.size() == 2 && !rounding))
        throw std::invalid_argument("\"" + text + "\" is not " + form);
    return {static_cast<std::uint32_t>(whole(text, words[0], kLargestShift, form)), rounding};
}

} // namespace enhancement
