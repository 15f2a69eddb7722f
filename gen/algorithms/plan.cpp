#include "algorithms/plan.h"

#include <cctype>
#include <stdexcept>

namespace gen {

int primitiveRoot(int p) {
    for (int g = 2; g < p; ++g) {
        int v = 1, order = 0;
        do {
            v = v * g % p;
            ++order;
        } while (v != 1);
        if (order == p - 1) return g;
    }
    throw std::invalid_argument("no primitive root");
}

int powMod(int base, int exp, int mod) {
    long long r = 1, b = base % mod;
    for (; exp > 0; exp >>= 1, b = b * b % mod)
        if (exp & 1) r = r * b % mod;
    return static_cast<int>(r);
}

namespace {

class PlanParser {
public:
    PlanParser(const std::string& text, const PlanLookup& table) : s_(text), table_(table) {}

    std::shared_ptr<Plan> parse() {
        auto p = expression();
        if (pos_ != s_.size()) fail("unexpected text");
        return p;
    }

private:
    [[noreturn]] void fail(const std::string& why) const {
        throw std::invalid_argument("plan \"" + s_ + "\": " + why + " at " + std::to_string(pos_));
    }
    bool peek(char c) const { return pos_ < s_.size() && s_[pos_] == c; }
    void expect(char c) {
        if (!peek(c)) fail(std::string("expected '") + c + "'");
        ++pos_;
    }
    int number() {
        if (pos_ >= s_.size() || !std::isdigit(static_cast<unsigned char>(s_[pos_]))) fail("expected a number");
        int v = 0;
        while (pos_ < s_.size() && std::isdigit(static_cast<unsigned char>(s_[pos_]))) v = v * 10 + (s_[pos_++] - '0');
        return v;
    }

    std::shared_ptr<Plan> expression() {
        auto left = term();
        while (peek('x') || peek('.')) {
            const bool goodThomas = s_[pos_++] == 'x';
            auto join = std::make_shared<Plan>();
            join->kind = goodThomas ? Plan::Kind::GoodThomas : Plan::Kind::CooleyTukey;
            join->first = left;
            if (peek('[')) {  // [transform of bin 0 | transform of the other bins]
                ++pos_;
                join->secondOfBinZero = expression();
                expect('|');
                join->second = expression();
                expect(']');
            } else {
                join->second = term();
            }
            join->n = join->first->n * join->second->n;
            left = join;
        }
        return left;
    }

    std::shared_ptr<Plan> term() {
        const size_t start = pos_;
        std::shared_ptr<Plan> p;
        if (peek('(')) {
            ++pos_;
            p = expression();
            expect(')');
        } else if (s_.compare(pos_, 2, "SR") == 0) {
            pos_ += 2;
            p = std::make_shared<Plan>();
            p->kind = Plan::Kind::SplitRadix;
            p->n = number();
        } else {
            p = std::make_shared<Plan>();
            p->n = number();
            if (peek('d')) {
                ++pos_;
                p->kind = Plan::Kind::Direct;
            } else if (peek('w')) {
                ++pos_;
                if (p->n != 5) fail("only 5 has a w form");
                p->kind = Plan::Kind::FiveW;
            } else if (peek('r')) {
                ++pos_;
                p->kind = Plan::Kind::Rader;
                p->root = primitiveRoot(p->n);
                if (peek('[')) {  // [forward transform | back transform]
                    ++pos_;
                    p->first = expression();
                    expect('|');
                    p->second = expression();
                    expect(']');
                } else {
                    p->first = p->second = table_(p->n - 1);
                }
            } else if (peek('b')) {
                ++pos_;
                p->kind = Plan::Kind::Bluestein;
                const int padded = number();
                p->first = p->second = table_(padded);
            } else {
                if (p->n < 2 || p->n > 5) fail("no small form of this length");
                p->kind = Plan::Kind::Small;
            }
        }
        p->text = s_.substr(start, pos_ - start);
        return p;
    }

    std::string s_;
    size_t pos_ = 0;
    const PlanLookup& table_;
};

}  // namespace

std::shared_ptr<Plan> parsePlan(const std::string& text, const PlanLookup& table) {
    return PlanParser(text, table).parse();
}

}  // namespace gen
