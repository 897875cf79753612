#pragma once

namespace kioui {

/// Lengths and places in user interfaces are device-independent: one unit is one pixel on a display of scale
/// 1 and two on one of scale 2. x grows to the right, y downwards.
template <typename T>
struct PointT {
    T x{};
    T y{};

    friend bool operator==(const PointT&, const PointT&) = default;
};

template <typename T>
struct SizeT {
    T width{};
    T height{};

    friend bool operator==(const SizeT&, const SizeT&) = default;
};

/// Right and bottom lie just outside, so that the width is right - left.
template <typename T>
struct RectT {
    T left{};
    T top{};
    T right{};
    T bottom{};

    constexpr T Width() const { return right - left; }
    constexpr T Height() const { return bottom - top; }
    /// Whether it holds nothing: an edge does not lie beyond its opposite.
    constexpr bool IsEmpty() const { return !(right > left && bottom > top); }
    constexpr bool Contains(PointT<T> inPoint) const
    {
        return inPoint.x >= left && inPoint.x < right && inPoint.y >= top && inPoint.y < bottom;
    }

    friend bool operator==(const RectT&, const RectT&) = default;
};

} // namespace kioui
