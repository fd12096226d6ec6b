#include "viewkit/ViewSExt.h"

namespace SExt {

using platform::Rect;
using platform::View;

double x(const View& view) {
    return view.frame().origin.x;
}
double y(const View& view) {
    return view.frame().origin.y;
}
double width(const View& view) {
    return view.frame().size.width;
}
double height(const View& view) {
    return view.frame().size.height;
}
double left(const View& view) {
    return view.frame().origin.x;
}
double right(const View& view) {
    return view.frame().origin.x + view.frame().size.width;
}
double top(const View& view) {
    return view.frame().origin.y + view.frame().size.height;
}
double bottom(const View& view) {
    return view.frame().origin.y;
}

void setX(View& view, double x) {
    Rect frame = view.frame();
    frame.origin.x = x;
    view.setFrame(frame);
}

void setY(View& view, double y) {
    Rect frame = view.frame();
    frame.origin.y = y;
    view.setFrame(frame);
}

void setWidth(View& view, double width) {
    Rect frame = view.frame();
    frame.size.width = width;
    view.setFrame(frame);
}

void setHeight(View& view, double height) {
    Rect frame = view.frame();
    frame.size.height = height;
    view.setFrame(frame);
}

void setLeft(View& view, double left) {
    setX(view, left);
}

void setRight(View& view, double right) {
    Rect frame = view.frame();
    frame.size.width = right - frame.origin.x;
    view.setFrame(frame);
}

void setTop(View& view, double top) {
    Rect frame = view.frame();
    frame.size.height = top - frame.origin.y;
    view.setFrame(frame);
}

void setBottom(View& view, double bottom) {
    setY(view, bottom);
}

void setCornerRadius(View& view, double radius) {
    if (!(radius > 0))
        return;  // also refuses NaN
    view.setWantsLayer(true);
    platform::Layer* layer = view.layer();
    if (!layer)
        return;
    layer->setCornerRadius(radius);
    layer->setMasksToBounds(true);
}

double cornerRadius(const View& view) {
    const platform::Layer* layer = view.layer();
    return layer ? layer->cornerRadius() : 0;
}

}  // namespace SExt
