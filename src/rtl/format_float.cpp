#include "number_text_p.h"
#include "quorda/rtl/numbers.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace quorda {
namespace {

// One section of a picture format, split into what the number needs and the literal text around it.
struct Picture {
    enum class Item { IntDigit, FracDigit, DecimalPoint, Exponent, Literal };
    struct Token {
        Item Kind;
        std::string Text; // literal text; for Exponent "E+" / "e-" ...
        int ExponentDigits = 0;
    };
    std::vector<Token> Tokens;
    int IntPlaceholders = 0;
    int IntZeros = 0; // digits forced by "0" from the first "0" to the decimal point
    int FracZeros = 0;
    int FracPlaceholders = 0;
    bool Thousands = false;
    bool Scientific = false;
};

// Splits a format into its sections, ignoring ";" inside quotes.
std::vector<std::string> Sections(const std::string& format) {
    std::vector<std::string> sections(1);
    char quote = 0;
    for (char c : format) {
        if (quote != 0) {
            if (c == quote) {
                quote = 0;
            }
        } else if (c == '"' || c == '\'') {
            quote = c;
        } else if (c == ';') {
            sections.emplace_back();
            continue;
        }
        sections.back() += c;
    }
    return sections;
}

Picture Parse(const std::string& section) {
    Picture picture;
    bool afterPoint = false;
    bool seenZero = false;
    auto literal = [&](const std::string& text) {
        if (!picture.Tokens.empty() && picture.Tokens.back().Kind == Picture::Item::Literal) {
            picture.Tokens.back().Text += text;
        } else {
            picture.Tokens.push_back({Picture::Item::Literal, text});
        }
    };
    for (size_t i = 0; i < section.size(); ++i) {
        const char c = section[i];
        if (picture.Scientific) {
            literal(std::string(1, c));
            continue;
        }
        switch (c) {
        case '"':
        case '\'': {
            const size_t close = section.find(c, i + 1);
            const size_t end = close == std::string::npos ? section.size() : close;
            literal(section.substr(i + 1, end - i - 1));
            i = end;
            break;
        }
        case '0':
        case '#':
            if (afterPoint) {
                ++picture.FracPlaceholders;
                if (c == '0') {
                    picture.FracZeros = picture.FracPlaceholders;
                }
                picture.Tokens.push_back({Picture::Item::FracDigit, {}});
            } else {
                ++picture.IntPlaceholders;
                seenZero = seenZero || c == '0';
                if (seenZero) {
                    ++picture.IntZeros;
                }
                picture.Tokens.push_back({Picture::Item::IntDigit, {}});
            }
            break;
        case '.':
            if (afterPoint) {
                literal(".");
            } else {
                afterPoint = true;
                picture.Tokens.push_back({Picture::Item::DecimalPoint, {}});
            }
            break;
        case ',':
            if (!afterPoint) {
                picture.Thousands = true;
            }
            break;
        case 'E':
        case 'e':
            if (i + 1 < section.size() && (section[i + 1] == '+' || section[i + 1] == '-') &&
                picture.IntPlaceholders + picture.FracPlaceholders > 0) {
                Picture::Token token{Picture::Item::Exponent, section.substr(i, 2)};
                i += 2;
                while (i < section.size() && section[i] == '0') {
                    ++token.ExponentDigits;
                    ++i;
                }
                --i;
                picture.Tokens.push_back(token);
                picture.Scientific = true;
            } else {
                literal(std::string(1, c));
            }
            break;
        default:
            literal(std::string(1, c));
            break;
        }
    }
    return picture;
}

// Writes a magnitude through the picture; allZero tells whether every written digit is 0.
std::string Render(const Picture& picture, double magnitude, const TFormatSettings& settings, bool& allZero) {
    std::string intDigits;
    std::string fracDigits;
    int exponent = 0;
    detail::DecimalDigits number = detail::ToDecimalDigits(magnitude, 15);
    if (picture.Scientific) {
        // As many integer digits as the picture has integer places (at least one).
        const int intPlaces = std::max(picture.IntPlaceholders, 1);
        if (number.Digits != "0") {
            exponent = number.Exponent - (intPlaces - 1);
            number.Exponent = intPlaces - 1;
        }
        detail::FixedDigits fixed = detail::ToFixedDigits(number, picture.FracPlaceholders);
        if (fixed.IntPart.size() > size_t(intPlaces)) {
            // Rounding carried into a new digit: shift once more.
            number.Exponent -= 1;
            exponent += 1;
            fixed = detail::ToFixedDigits(number, picture.FracPlaceholders);
        }
        intDigits = fixed.IntPart;
        fracDigits = fixed.FracPart;
        allZero = fixed.AllZero;
    } else {
        const detail::FixedDigits fixed = detail::ToFixedDigits(number, picture.FracPlaceholders);
        intDigits = fixed.IntPart;
        fracDigits = fixed.FracPart;
        allZero = fixed.AllZero;
    }
    while (fracDigits.size() > size_t(picture.FracZeros) && fracDigits.back() == '0') {
        fracDigits.pop_back();
    }
    if (intDigits.size() < size_t(picture.IntZeros)) {
        intDigits.insert(0, size_t(picture.IntZeros) - intDigits.size(), '0');
    }

    std::string out;
    int intSlot = 0;
    size_t fracSlot = 0;
    // Integer digits beyond the picture's places go out with its first place.
    const int extra = int(intDigits.size()) - picture.IntPlaceholders;
    size_t nextDigit = 0;
    auto emitIntDigit = [&]() {
        out += intDigits[nextDigit++];
        const size_t left = intDigits.size() - nextDigit;
        if (picture.Thousands && left > 0 && left % 3 == 0 && settings.ThousandSeparator != '\0') {
            out += settings.ThousandSeparator;
        }
    };
    for (const Picture::Token& token : picture.Tokens) {
        switch (token.Kind) {
        case Picture::Item::Literal:
            out += token.Text;
            break;
        case Picture::Item::IntDigit:
            if (intSlot == 0) {
                for (int k = 0; k < extra; ++k) {
                    emitIntDigit();
                }
            }
            if (intSlot - (picture.IntPlaceholders - int(intDigits.size())) >= 0) {
                emitIntDigit();
            }
            ++intSlot;
            break;
        case Picture::Item::DecimalPoint:
            if (!fracDigits.empty()) {
                out += settings.DecimalSeparator;
            }
            break;
        case Picture::Item::FracDigit:
            if (fracSlot < fracDigits.size()) {
                out += fracDigits[fracSlot];
            }
            ++fracSlot;
            break;
        case Picture::Item::Exponent: {
            std::string digits = std::to_string(std::abs(exponent));
            if (digits.size() < size_t(token.ExponentDigits)) {
                digits.insert(0, size_t(token.ExponentDigits) - digits.size(), '0');
            }
            out += token.Text[0];
            if (exponent < 0) {
                out += '-';
            } else if (token.Text[1] == '+') {
                out += '+';
            }
            out += digits;
            break;
        }
        }
    }
    return out;
}

} // namespace

std::string FormatFloat(const std::string& format, double value) {
    return FormatFloat(format, value, FormatSettings());
}

std::string FormatFloat(const std::string& format, double value, const TFormatSettings& settings) {
    if (std::isnan(value) || std::isinf(value)) {
        return FloatToStr(value, settings);
    }
    if (format.empty()) {
        return FloatToStr(value, settings);
    }
    const std::vector<std::string> sections = Sections(format);
    // Negative values use the second section without a sign of their own, zero the third; an empty
    // or missing section falls back to the first.
    size_t index = 0;
    if (value < 0 && sections.size() > 1 && !sections[1].empty()) {
        index = 1;
    } else if (value == 0 && sections.size() > 2 && !sections[2].empty()) {
        index = 2;
    }
    const Picture picture = Parse(sections[index]);
    bool allZero = true;
    std::string text = Render(picture, std::fabs(value), settings, allZero);
    if (allZero && index == 0 && value != 0 && sections.size() > 2 && !sections[2].empty()) {
        // Rounds to zero in the first section: the zero section applies.
        return Render(Parse(sections[2]), 0, settings, allZero);
    }
    if (value < 0 && index == 0 && !allZero) {
        text.insert(0, 1, '-');
    }
    return text;
}

} // namespace quorda
