#pragma once

#include "platform/ui/View.h"

// Named access to a view's frame edges and size, and corner rounding through its backing layer.
// Every setter reads the frame once, replaces one field and applies the whole rectangle through
// the view's (virtual) setFrame, so a subclass that overrides setFrame sees every change.
// Nothing is rounded, clamped or validated. Values are in the superview's coordinates (origin
// bottom-left, y up); flipping is never consulted. Main thread only, like the views themselves.
namespace SExt {

double x(const platform::View& view);
void setX(platform::View& view, double x);
double y(const platform::View& view);
void setY(platform::View& view, double y);
double width(const platform::View& view);
void setWidth(platform::View& view, double width);
double height(const platform::View& view);
void setHeight(platform::View& view, double height);

// Same as x / setX: the width stays, so the right edge moves.
double left(const platform::View& view);
void setLeft(platform::View& view, double left);
// origin x + width. The setter resizes: width = right - origin x.
double right(const platform::View& view);
void setRight(platform::View& view, double right);
// origin y + height. The setter resizes: height = top - origin y.
double top(const platform::View& view);
void setTop(platform::View& view, double top);
// Same as y / setY: the height stays, so the top edge moves.
double bottom(const platform::View& view);
void setBottom(platform::View& view, double bottom);

// A radius not greater than 0 (or NaN) changes nothing, so an earlier rounding stays. Otherwise
// the view gets a layer that is rounded and masks its contents to the rounded bounds.
void setCornerRadius(platform::View& view, double radius);
// The layer's radius; 0 without a layer.
double cornerRadius(const platform::View& view);

}  // namespace SExt
