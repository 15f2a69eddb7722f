// Recursive partitioning, as the classic FFT codelet generators schedule: a
// connected graph is cut at its middle level into an input side and an output
// side, which are written in that order; each side falls apart into
// independent pieces (the sub-transforms of a stage), and each piece is
// scheduled the same way, one after the other.  A stage of sub-transforms is
// then computed one sub-transform at a time, down to single butterflies, and
// the values live at any moment are those crossing the current cut.  Stages
// that the graph marks (Graph::beginStage) are cuts made first.
#include "emit/schedule.h"

#include <algorithm>

namespace gen {

namespace {

class Scheduler {
public:
    explicit Scheduler(const Graph& g) : mark_(g.nodes().size(), 0), level_(g.nodes().size(), 0) {
        const std::vector<int> live = g.liveNodes();
        preds_.resize(g.nodes().size());
        succs_.resize(g.nodes().size());
        for (int id : live) {
            for (int p : g.operandsOf(id)) {
                preds_[id].push_back(p);
                succs_[p].push_back(id);
            }
        }
        // Operands are made before their users, so a stage reads only its
        // own nodes and earlier stages'.
        const std::vector<int>& starts = g.stageStarts();
        std::vector<std::vector<int>> stages(starts.size() + 1);
        for (int id : live) stages[std::upper_bound(starts.begin(), starts.end(), id) - starts.begin()].push_back(id);
        for (const auto& stage : stages) place(stage);
    }

    std::vector<int> order() && { return std::move(order_); }

private:
    // Appends `set` to the order.  `set` is in ascending ids, which is a
    // topological order, and its predecessors outside it are already placed.
    void place(const std::vector<int>& set) {
        if (set.size() <= 2) {
            order_.insert(order_.end(), set.begin(), set.end());
            return;
        }
        const int token = ++token_;
        for (int id : set) mark_[id] = token;

        std::vector<std::vector<int>> pieces = components(set, token);
        if (pieces.size() > 1) {
            for (const auto& piece : pieces) place(piece);
            return;
        }
        // Connected: cut at the middle level.  Every predecessor of a node
        // has a lower level, so the input side is closed under predecessors.
        int top = 0;
        for (int id : set) {
            int level = 0;
            for (int p : preds_[id])
                if (mark_[p] == token) level = std::max(level, level_[p] + 1);
            level_[id] = level;
            top = std::max(top, level);
        }
        const int cut = (top + 2) / 2;
        std::vector<int> inputSide, outputSide;
        for (int id : set) (level_[id] < cut ? inputSide : outputSide).push_back(id);
        place(inputSide);
        place(outputSide);
    }

    // The weakly connected pieces of `set` (members carry `token`), each in
    // ascending ids, ordered by their first node.
    std::vector<std::vector<int>> components(const std::vector<int>& set, int token) {
        const int seen = ++token_;
        std::vector<std::vector<int>> pieces;
        for (int start : set) {
            if (mark_[start] != token) continue;
            std::vector<int> piece{start}, stack{start};
            mark_[start] = seen;
            while (!stack.empty()) {
                const int id = stack.back();
                stack.pop_back();
                for (const auto* edges : {&preds_[id], &succs_[id]})
                    for (int other : *edges)
                        if (mark_[other] == token) {
                            mark_[other] = seen;
                            piece.push_back(other);
                            stack.push_back(other);
                        }
            }
            std::sort(piece.begin(), piece.end());
            pieces.push_back(std::move(piece));
        }
        for (int id : set) mark_[id] = token;
        return pieces;
    }

    std::vector<std::vector<int>> preds_, succs_;
    std::vector<int> mark_, level_;
    int token_ = 0;
    std::vector<int> order_;
};

}  // namespace

std::vector<int> scheduleNodes(const Graph& g) { return Scheduler(g).order(); }

}  // namespace gen

namespace gen {

std::vector<int> storePositions(const Graph& g, const std::vector<int>& order, const std::vector<int>& storedNodes) {
    std::vector<int> position(g.nodes().size(), -1);
    int lastLoad = -1;
    for (int i = 0; i < static_cast<int>(order.size()); ++i) {
        position[order[i]] = i;
        if (g.node(order[i]).op == Op::Input) lastLoad = i;
    }
    std::vector<int> at;
    for (int node : storedNodes) at.push_back(std::max(lastLoad, node >= 0 ? position[node] : -1));
    return at;
}

}  // namespace gen
