#include <tessel_data/QuantileSketch_p.h>

#include <tessel_data/Tally_p.h>

#include <algorithm>
#include <iterator>

namespace tessel {

double QuantileSketch::weightOf(const std::vector<Point>& points)
{
    ExactSum sum;
    for (const Point& point : points)
        sum.add(point.weight);
    return sum.value();
}

std::vector<QuantileSketch::Point> QuantileSketch::merged(
    const std::vector<Point>& first, const std::vector<Point>& second)
{
    std::vector<Point> all;
    all.reserve(first.size() + second.size());
    std::merge(first.begin(), first.end(), second.begin(), second.end(), std::back_inserter(all),
        [](const Point& one, const Point& other) { return one.value < other.value; });
    return all;
}

// Each point that is left stands in the middle of its share of the weight.
void QuantileSketch::cut(Portion& portion) const
{
    if (portion.points.size() <= m_pointLimit)
        return;
    const double step = portion.weight / double(m_pointLimit);
    std::vector<Point> left;
    ExactSum below;
    std::size_t taken = 0;
    for (const Point& point : portion.points) {
        below.add(point.weight);
        const std::size_t before = taken;
        while (taken < m_pointLimit && (double(taken) + 0.5) * step <= below.value())
            ++taken;
        if (taken > before)
            left.push_back({ point.value, double(taken - before) * step });
    }
    portion.points = std::move(left);
    portion.error += step / 2;
}

void QuantileSketch::place(Portion portion)
{
    cut(portion);
    for (Portion& other : m_portions) {
        if (other.points.empty()) {
            other = std::move(portion);
            return;
        }
        portion.points = merged(other.points, portion.points);
        portion.weight += other.weight;
        portion.error += other.error;
        cut(portion);
        other = {};
    }
    m_portions.push_back(std::move(portion));
}

void QuantileSketch::add(std::vector<Point> points)
{
    if (points.empty())
        return;
    const double weight = weightOf(points);
    if (m_portions.empty()) {
        m_portions.push_back({ std::move(points), weight, 0 });
        return;
    }
    if (m_isExact) {
        m_isExact = false;
        cut(m_portions.front());
    }
    place({ std::move(points), weight, 0 });
}

std::optional<double> QuantileSketch::quantile(double share) const
{
    std::vector<Point> all;
    for (const Portion& portion : m_portions)
        all = merged(all, portion.points);
    const double weight = weightOf(all);
    constexpr double nearly = 1e-12; // what sums of weights may be off by
    const double wanted = share * weight;
    ExactSum below;
    for (std::size_t i = 0; i < all.size(); ++i) {
        below.add(all[i].weight);
        const double distance = below.value() - wanted;
        if (std::abs(distance) <= nearly * weight && i + 1 < all.size())
            return all[i].value / 2 + all[i + 1].value / 2;
        if (distance >= 0)
            return all[i].value;
    }
    return all.empty() ? std::nullopt : std::optional<double>(all.back().value);
}

double QuantileSketch::error() const
{
    double error = 0;
    double weight = 0;
    for (const Portion& portion : m_portions) {
        error += portion.error;
        weight += portion.weight;
    }
    return weight > 0 ? error / weight : 0;
}

std::size_t QuantileSketch::pointCount() const
{
    std::size_t count = 0;
    for (const Portion& portion : m_portions)
        count += portion.points.size();
    return count;
}

} // namespace tessel
