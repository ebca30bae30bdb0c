#pragma once

#include <cstddef>
#include <optional>
#include <vector>

namespace tessel {

/*
 * Quantiles of any number of weighted values. Those of one portion are exact. Of several, each is
 * cut to so many points of the same weight, two of a size are merged and cut again, and so on: what
 * that may move a value by, as a share of the weight, is summed up on the way.
 */
class QuantileSketch {
public:
    struct Point {
        double value;
        double weight; // above 0
    };

    explicit QuantileSketch(std::size_t pointLimit)
        : m_pointLimit(pointLimit)
    {
    }

    // Points in order of their values.
    void add(std::vector<Point> points);
    // The smallest value that a share of the weight does not exceed, or the mean of it and the next
    // where it is exactly that share; nothing without weight.
    std::optional<double> quantile(double share) const;
    // A quantile's place is as near to its share as this; 0: exact.
    double error() const;
    std::size_t pointCount() const;

private:
    struct Portion {
        std::vector<Point> points;
        double weight = 0;
        double error = 0; // in weight
    };

    static double weightOf(const std::vector<Point>& points);
    static std::vector<Point> merged(
        const std::vector<Point>& first, const std::vector<Point>& second);
    void cut(Portion& portion) const;
    void place(Portion portion);

    std::size_t m_pointLimit;
    std::vector<Portion> m_portions; // by size: 1, 2, 4, ... of those that were added; or empty
    bool m_isExact = true; // one portion, as it came
};

} // namespace tessel
