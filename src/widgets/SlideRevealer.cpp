#include "widgets/SlideRevealer.h"

#include <algorithm>
#include <cmath>

struct OvelSlideBox {
    GtkWidget parent_instance;
    GtkWidget* child;
    int edge;
    double progress;
};

struct OvelSlideBoxClass {
    GtkWidgetClass parent_class;
};

G_DEFINE_TYPE(OvelSlideBox, ovel_slide_box, GTK_TYPE_WIDGET)

namespace {

using Edge = ovel::SlideRevealer::Edge;

OvelSlideBox* slideBox(GtkWidget* widget) {
    return reinterpret_cast<OvelSlideBox*>(widget);
}

GtkOrientation slideAxis(const OvelSlideBox* box) {
    return static_cast<Edge>(box->edge) == Edge::Leading ? GTK_ORIENTATION_HORIZONTAL
                                                         : GTK_ORIENTATION_VERTICAL;
}

double visibleFraction(const OvelSlideBox* box) {
    return std::clamp(box->progress, 0.0, 1.0);
}

} // namespace

static void ovel_slide_box_measure(GtkWidget* widget, GtkOrientation orientation, int forSize,
                                   int* minimum, int* natural, int* minimumBaseline,
                                   int* naturalBaseline) {
    OvelSlideBox* box = slideBox(widget);
    *minimum = *natural = 0;
    *minimumBaseline = *naturalBaseline = -1;
    if (box->child == nullptr || !gtk_widget_get_visible(box->child)) {
        return;
    }
    int childMinimum = 0;
    int childNatural = 0;
    gtk_widget_measure(box->child, orientation, forSize, &childMinimum, &childNatural, nullptr,
                       nullptr);
    if (orientation == slideAxis(box)) {
        // Along the slide, the place grows with the panel and holds its whole size once shown.
        *minimum = *natural =
            static_cast<int>(std::ceil(childNatural * visibleFraction(box) - 0.001));
    } else {
        *minimum = childMinimum;
        *natural = childNatural;
    }
}

static void ovel_slide_box_size_allocate(GtkWidget* widget, int width, int height, int baseline) {
    OvelSlideBox* box = slideBox(widget);
    if (box->child == nullptr || !gtk_widget_get_visible(box->child)) {
        return;
    }
    int childWidth = width;
    int childHeight = height;
    const GtkOrientation axis = slideAxis(box);
    int ignored = 0;
    if (axis == GTK_ORIENTATION_HORIZONTAL) {
        gtk_widget_measure(box->child, axis, height, &ignored, &childWidth, nullptr, nullptr);
    } else {
        gtk_widget_measure(box->child, axis, width, &ignored, &childHeight, nullptr, nullptr);
    }
    // The panel's far edge stays on the boundary with its neighbours; the rest is still
    // outside the window's edge (and clipped).
    float x = 0;
    float y = 0;
    switch (static_cast<Edge>(box->edge)) {
    case Edge::Leading:
        if (gtk_widget_get_direction(widget) != GTK_TEXT_DIR_RTL) {
            x = static_cast<float>(width - childWidth);
        }
        break;
    case Edge::Top:
        y = static_cast<float>(height - childHeight);
        break;
    case Edge::Bottom:
        break;
    }
    graphene_point_t origin = GRAPHENE_POINT_INIT(x, y);
    gtk_widget_allocate(box->child, childWidth, childHeight, baseline,
                        gsk_transform_translate(nullptr, &origin));
}

static void ovel_slide_box_dispose(GObject* object) {
    OvelSlideBox* box = slideBox(GTK_WIDGET(object));
    g_clear_pointer(&box->child, gtk_widget_unparent);
    G_OBJECT_CLASS(ovel_slide_box_parent_class)->dispose(object);
}

static void ovel_slide_box_class_init(OvelSlideBoxClass* klass) {
    GtkWidgetClass* widgetClass = GTK_WIDGET_CLASS(klass);
    widgetClass->measure = ovel_slide_box_measure;
    widgetClass->size_allocate = ovel_slide_box_size_allocate;
    G_OBJECT_CLASS(klass)->dispose = ovel_slide_box_dispose;
}

static void ovel_slide_box_init(OvelSlideBox* box) {
    box->child = nullptr;
    box->edge = 0;
    box->progress = 0;
    gtk_widget_set_overflow(GTK_WIDGET(box), GTK_OVERFLOW_HIDDEN);
}

namespace ovel {

SlideRevealer::SlideRevealer(Edge edge, Spring spring)
    : edge_(edge), spring_(spring), widget_(GObjectRef<GtkWidget>::retain(GTK_WIDGET(
                                        g_object_new(ovel_slide_box_get_type(), nullptr)))),
      progress_(widget_.get(), 0, [this](double value) { setProgress(value); }) {
    slideBox(widget())->edge = static_cast<int>(edge_);
    gtk_widget_add_css_class(widget(), "slide-revealer");
    setProgress(0);
}

void SlideRevealer::setChild(GtkWidget* child) {
    OvelSlideBox* box = slideBox(widget());
    g_clear_pointer(&box->child, gtk_widget_unparent);
    box->child = child;
    if (child != nullptr) {
        gtk_widget_set_parent(child, widget());
    }
    setProgress(box->progress);
}

double SlideRevealer::progress() const {
    return slideBox(widget())->progress;
}

void SlideRevealer::reveal(bool shown, Motion motion) {
    const double target = shown ? 1.0 : 0.0;
    if (target == target_) {
        return;
    }
    target_ = target;
    // A panel on its way in is part of the window at once, so it can take the keyboard.
    if (shown && slideBox(widget())->child != nullptr) {
        gtk_widget_set_visible(slideBox(widget())->child, TRUE);
    }
    // Retargeted from wherever the panel is now, so a quick toggle does not jump.
    progress_.animateTo(target, spring_, motion == Motion::Smooth);
}

void SlideRevealer::setProgress(double progress) {
    OvelSlideBox* box = slideBox(widget());
    box->progress = progress;
    if (box->child != nullptr) {
        // A hidden panel takes no focus and is not announced.
        gtk_widget_set_visible(box->child, progress > 0);
        gtk_widget_set_opacity(box->child, std::clamp(progress, 0.0, 1.0));
    }
    gtk_widget_queue_resize(widget());
}

} // namespace ovel
