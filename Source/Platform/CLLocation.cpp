#include "Platform/CLLocation.h"

#include <algorithm>
#include <cmath>

namespace vorlane {

namespace {

constexpr double kPole = 90.0;
constexpr double kDateLine = 180.0;
constexpr double kEarthRadiusInKilometres = 6371.0;
constexpr double kMetresInKilometre = 1000.0;
constexpr double kRadiansInDegree = 3.14159265358979323846 / 180.0;

}  // namespace

bool CLLocationCoordinate2DIsValid(const CLLocationCoordinate2D& coordinate) {
    // False for NaN.
    return std::abs(coordinate.latitude) <= kPole && std::abs(coordinate.longitude) <= kDateLine;
}

double CLDistanceBetween(const CLLocationCoordinate2D& first, const CLLocationCoordinate2D& second) {
    const double sineOfLatitudes = std::sin((second.latitude - first.latitude) * kRadiansInDegree / 2);
    const double sineOfLongitudes = std::sin((second.longitude - first.longitude) * kRadiansInDegree / 2);
    const double a = sineOfLatitudes * sineOfLatitudes + std::cos(first.latitude * kRadiansInDegree) *
                                                             std::cos(second.latitude * kRadiansInDegree) *
                                                             sineOfLongitudes * sineOfLongitudes;
    // For antipodal points, rounding can make `a` slightly greater than 1.
    const double c = 2 * std::atan2(std::sqrt(a), std::sqrt(std::max(0.0, 1 - a)));
    return c * kEarthRadiusInKilometres * kMetresInKilometre;
}

}  // namespace vorlane
