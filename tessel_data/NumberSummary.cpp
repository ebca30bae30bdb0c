#include <tessel_data/NumberSummary_p.h>

namespace tessel {

namespace {

using Points = std::vector<QuantileSketch::Point>;

std::optional<double> finite(double number)
{
    return std::isfinite(number) ? std::optional<double>(number) : std::nullopt;
}

template <typename WeightOf>
Points pointsOf(const std::vector<CountedNumber>& numbers, const WeightOf& weightOf)
{
    Points points;
    points.reserve(numbers.size());
    for (const CountedNumber& one : numbers) {
        const double weight = weightOf(one.tally);
        if (weight > 0)
            points.push_back({ one.number, weight });
    }
    return points;
}

} // namespace

void MomentSum::add(const Points& points)
{
    ExactSum weights;
    ExactSum products;
    for (const auto& point : points) {
        weights.add(point.weight);
        products.add(point.weight * point.value);
    }
    const double weight = weights.value();
    if (weight <= 0)
        return;
    const double mean = products.value() / weight;
    ExactSum squares;
    for (const auto& point : points)
        squares.add(point.weight * (point.value - mean) * (point.value - mean));
    const double whole = m_weight + weight;
    const double distance = mean - m_mean;
    m_squares += squares.value() + distance * distance * m_weight * (weight / whole);
    m_mean += distance * (weight / whole);
    m_weight = whole;
}

std::optional<double> MomentSum::mean() const
{
    return m_weight > 0 ? finite(m_mean) : std::nullopt;
}

std::optional<double> MomentSum::deviation() const
{
    return m_weight > 1 ? finite(std::sqrt(m_squares / (m_weight - 1))) : std::nullopt;
}

NumberSummary::NumberSummary(double finest, std::size_t pointLimit)
    : m_sketch(pointLimit)
    , m_weightedSketch(pointLimit)
    , m_histogram(finest)
{
}

void NumberSummary::add(const std::vector<CountedNumber>& numbers)
{
    if (numbers.empty())
        return;
    const auto keep = [](End& end, const CountedNumber& one, bool isFurther) {
        if (end.count == 0 || isFurther)
            end = { one.key, one.number, one.tally.count };
        else if (end.key == one.key && end.number == one.number)
            end.count += one.tally.count;
    };
    keep(m_lowest, numbers.front(), numbers.front().number < m_lowest.number);
    keep(m_highest, numbers.back(), numbers.back().number > m_highest.number);
    Points points = pointsOf(numbers, [](const Tally& tally) { return double(tally.count); });
    m_sum.add(points);
    m_sketch.add(std::move(points));
    Points weighted = pointsOf(numbers, [](const Tally& tally) { return tally.weight.value(); });
    m_weightedSum.add(weighted);
    m_weightedSketch.add(std::move(weighted));
    m_histogram.add(numbers);
}

StatisticsMoments NumberSummary::momentsOf(const MomentSum& sum, const QuantileSketch& sketch)
{
    constexpr double quarter = 0.25;
    StatisticsMoments moments;
    moments.mean = sum.mean();
    moments.deviation = sum.deviation();
    moments.lowerQuartile = sketch.quantile(quarter);
    moments.median = sketch.quantile(2 * quarter);
    moments.upperQuartile = sketch.quantile(3 * quarter);
    moments.quartileError = sketch.error();
    return moments;
}

} // namespace tessel
