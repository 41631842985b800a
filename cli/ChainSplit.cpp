#include "ChainSplit.h"

#include <algorithm>
#include <limits>

namespace afx {

std::vector<ChainPart> splitChain(std::size_t links, std::size_t parts) {
    parts = std::clamp<std::size_t>(parts, 1, std::max<std::size_t>(links, 1));
    std::vector<ChainPart> split(parts);
    for (std::size_t part = 0; part < parts; ++part) {
        split[part].firstLink = part * links / parts;
        split[part].endLink = (part + 1) * links / parts;
        split[part].last = part + 1 == parts;
    }
    return split;
}

namespace {

// The cheapest way to cut `cost` (in link order) into `parts` runs, as the
// cost of the dearest run: linear partition by dynamic programming; `cuts`
// receives the first link of each run.
double cheapestCut(const std::vector<double>& cost, std::size_t parts, std::vector<std::size_t>& cuts) {
    const std::size_t n = cost.size();
    std::vector<double> prefix(n + 1, 0.0);
    for (std::size_t i = 0; i < n; ++i) prefix[i + 1] = prefix[i] + cost[i];
    constexpr double kNone = std::numeric_limits<double>::infinity();
    // best[k][i]: the dearest run when the first i links make k runs; from[k][i]: where the last begins.
    std::vector<std::vector<double>> best(parts + 1, std::vector<double>(n + 1, kNone));
    std::vector<std::vector<std::size_t>> from(parts + 1, std::vector<std::size_t>(n + 1, 0));
    best[0][0] = 0.0;
    for (std::size_t k = 1; k <= parts; ++k)
        for (std::size_t i = k; i <= n; ++i)
            for (std::size_t j = k - 1; j < i; ++j) {
                const double dearest = std::max(best[k - 1][j], prefix[i] - prefix[j]);
                if (dearest < best[k][i]) {
                    best[k][i] = dearest;
                    from[k][i] = j;
                }
            }
    cuts.assign(parts, 0);
    for (std::size_t k = parts, i = n; k > 0; i = from[k][i], --k) cuts[k - 1] = from[k][i];
    return best[parts][n];
}

}  // namespace

std::vector<ChainPart> splitByCost(const ChunkCosts& costs, std::size_t cores, std::size_t most) {
    const std::size_t links = costs.links.size();
    if (links < 2) return splitChain(links, 1);
    const std::size_t largest = std::clamp<std::size_t>(std::min(most, cores), 1, links);
    double total = costs.read + costs.write;
    for (double cost : costs.links) total += cost;
    const double shared = total / static_cast<double>(std::max<std::size_t>(cores, 1));
    const double files = std::max(costs.read, costs.write);
    std::vector<double> period(largest + 1, 0.0);
    std::vector<std::vector<std::size_t>> cuts(largest + 1);
    double fastest = std::numeric_limits<double>::infinity();
    for (std::size_t parts = 1; parts <= largest; ++parts) {
        period[parts] = std::max({cheapestCut(costs.links, parts, cuts[parts]), files, shared});
        fastest = std::min(fastest, period[parts]);
    }
    std::size_t chosen = 1;
    while (period[chosen] > fastest * 1.1) ++chosen;
    std::vector<ChainPart> split(chosen);
    for (std::size_t part = 0; part < chosen; ++part) {
        split[part].firstLink = cuts[chosen][part];
        split[part].endLink = part + 1 < chosen ? cuts[chosen][part + 1] : links;
        split[part].last = part + 1 == chosen;
    }
    return split;
}

}  // namespace afx
