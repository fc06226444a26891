#include "Targets.h"

#include <algorithm>
#include <optional>
#include <string_view>

#include "NumberText.h"

namespace neb::benchmarks {

namespace {

struct Bound {
    enum class Kind { atMost, atLeast, below } kind;
    double value;
};

constexpr Bound atMost(double value) {
    return {Bound::Kind::atMost, value};
}
constexpr Bound atLeast(double value) {
    return {Bound::Kind::atLeast, value};
}
constexpr Bound below(double value) {
    return {Bound::Kind::below, value};
}

bool holds(const Bound& bound, double figure) {
    switch (bound.kind) {
        case Bound::Kind::atMost:
            return figure <= bound.value;
        case Bound::Kind::atLeast:
            return figure >= bound.value;
        case Bound::Kind::below:
            break;
    }
    return figure < bound.value;
}

std::string textOf(const Bound& bound) {
    const char* prefix = bound.kind == Bound::Kind::atMost    ? "at most "
                         : bound.kind == Bound::Kind::atLeast ? "at least "
                                                              : "below ";
    return prefix + figureText(bound.value);
}

Target targetOf(std::string what, const Bound& bound, const std::optional<Spread>& figure) {
    if (!figure) {
        return {std::move(what), textOf(bound), "", "not measured"};
    }
    const bool isSingle = figure->least == figure->most;
    return {std::move(what), textOf(bound),
            isSingle ? figureText(figure->median) : spreadText(*figure),
            holds(bound, figure->median) ? "met" : "missed"};
}

Spread single(double value) {
    return {value, value, value};
}

Spread toGit(const Measurement& figures) {
    return figures.toGit;
}
Spread toLibGit2(const Measurement& figures) {
    return figures.toLibGit2;
}
Spread added(const Measurement& figures) {
    return figures.added;
}
Spread parsing(const Measurement& figures) {
    return single(figures.parsing / 1000);
}
Spread peakToPrinted(const Measurement& figures) {
    return single(figures.peakToPrinted());
}

/// The target of a case for one size.
struct CaseRow {
    const char* what;
    const char* caseName;
    int size;
    Spread (*figure)(const Measurement&);
    Bound bound;
};

constexpr const char* wholeOperation = "whole operation / git";
constexpr const char* addedTime = "added to git started by hand, ms";
constexpr const char* speed = "parser, MB/s";
constexpr const char* memory = "peak memory / printed bytes";
constexpr const char* beside = "whole operation / libgit2";

constexpr CaseRow caseRows[] = {
    {wholeOperation, "log", 200000, &toGit, atMost(1.03)},
    {wholeOperation, "log with files", 200000, &toGit, atMost(1.03)},
    {wholeOperation, "status", 20000, &toGit, atMost(1.03)},
    {wholeOperation, "blame", 10000, &toGit, atMost(1.03)},
    {wholeOperation, "diff", 50, &toGit, atMost(1.03)},
    {wholeOperation, "list", 10000, &toGit, atMost(1.03)},
    {wholeOperation, "state", 20000, &toGit, atMost(1.05)},
    {wholeOperation, "history", 200000, &toGit, atMost(1.05)},
    {wholeOperation, "annotation", 10000, &toGit, atMost(1.05)},
    {addedTime, "current branch", 1, &added, atMost(0.2)},
    {addedTime, "config value", 1, &added, atMost(0.2)},
    {addedTime, "merge base", 1, &added, atMost(0.2)},
    {speed, "log", 200000, &parsing, atLeast(1000)},
    {speed, "log with files", 200000, &parsing, atLeast(1000)},
    {speed, "status", 20000, &parsing, atLeast(400)},
    {speed, "diff names", 20000, &parsing, atLeast(400)},
    {speed, "blame", 10000, &parsing, atLeast(400)},
    {speed, "list", 10000, &parsing, atLeast(400)},
    {memory, "log", 200000, &peakToPrinted, atMost(2.5)},
    {memory, "log with files", 200000, &peakToPrinted, atMost(2.5)},
    {memory, "log", 1000000, &peakToPrinted, atMost(2.5)},
    {beside, "log", 200000, &toLibGit2, below(1)},
    {beside, "log with files", 200000, &toLibGit2, below(1)},
    {beside, "status", 20000, &toLibGit2, below(1)},
    {beside, "blame", 10000, &toLibGit2, below(1)},
    {beside, "state", 20000, &toLibGit2, below(1)},
    {beside, "history", 200000, &toLibGit2, below(1)},
    {beside, "annotation", 10000, &toLibGit2, below(1)},
};

const Measurement* find(const Results& results, std::string_view caseName, int size) {
    const auto found = std::find_if(
        results.measurements.begin(), results.measurements.end(),
        [&](const Measurement& one) { return one.what->name == caseName && one.size == size; });
    return found != results.measurements.end() ? &*found : nullptr;
}

/// The time per commit for a million commits, relative to 200,000.
Target growthTarget(const Results& results) {
    const Measurement* many = find(results, "log", 1000000);
    const Measurement* some = find(results, "log", 200000);
    std::optional<Spread> growth;
    std::string what = "log, time per commit, 1,000,000 commits / 200,000";
    if (many != nullptr && some != nullptr) {
        growth = single(many->operation.median / some->operation.median / 5);
        what += " (git itself: " + figureText(many->git.median / some->git.median / 5) + ")";
    }
    return targetOf(std::move(what), atMost(1.1), growth);
}

std::optional<Spread> largeHostOf(const Results& results, std::string_view caseName) {
    for (const auto& [name, ratio] : results.largeHost) {
        if (name == caseName) {
            return ratio;
        }
    }
    return std::nullopt;
}

std::string nameOf(const CaseRow& row) {
    return row.size > 1
               ? std::string(row.caseName) + " " + countText(static_cast<std::size_t>(row.size))
               : row.caseName;
}

}  // namespace

std::vector<Target> targetsOf(const Results& results) {
    std::vector<Target> targets;
    for (const CaseRow& row : caseRows) {
        const Measurement* figures = find(results, row.caseName, row.size);
        targets.push_back(
            targetOf(nameOf(row) + ": " + row.what, row.bound,
                     figures != nullptr ? std::optional(row.figure(*figures)) : std::nullopt));
    }
    targets.push_back(growthTarget(results));
    for (const Case& one : allCases()) {
        if (one.kind == RepositoryKind::small) {
            targets.push_back(
                targetOf(std::string(one.name) + ": with 4 GiB of touched memory / without",
                         atMost(1.1), largeHostOf(results, one.name)));
        }
    }
    const auto& collection = results.collection;
    targets.push_back(targetOf("collected bytes a second / bare read loop", atLeast(0.9),
                               collection ? std::optional(collection->toKeeping) : std::nullopt));
    const auto& load = results.serverLoad;
    targets.push_back(targetOf("64 requests at once through the server / xargs -P 64", atLeast(0.9),
                               load ? std::optional(load->toXargs) : std::nullopt));
    return targets;
}

}  // namespace neb::benchmarks
