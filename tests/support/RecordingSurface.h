#pragma once
// A plot surface for tests: records every drawing call with the pen's
// position and colour at that moment, so a test can check what a plot drew
// without pixels.
#include <cstdint>
#include <string>
#include <vector>

#include "platform/Colours.h"
#include "platform/PlotSurface.h"

namespace testing_support {

class RecordingSurface : public ui::PlotSurface {
public:
    enum class Kind { Cls, MoveTo, LineTo, Line, Box, Refresh };
    struct Op {
        Kind kind;
        float x1 = 0, y1 = 0, x2 = 0, y2 = 0;  // from and to; a box's corners
        std::int32_t colour = 0;
        std::int16_t style = 0;
    };

    explicit RecordingSurface(std::string type = "PictureBox",
                              std::int32_t back = ui::kColourButtonFace)
        : type_(std::move(type)), back_(back)
    {
    }

    std::vector<Op> ops;

    // The ops of one kind, in order.
    std::vector<Op> only(Kind kind) const
    {
        std::vector<Op> found;
        for (const Op& op : ops) {
            if (op.kind == kind) found.push_back(op);
        }
        return found;
    }
    // Lines drawn from the current point and between points, in order.
    std::vector<Op> lines() const
    {
        std::vector<Op> found;
        for (const Op& op : ops) {
            if (op.kind == Kind::LineTo || op.kind == Kind::Line) found.push_back(op);
        }
        return found;
    }

    std::string typeName() const override { return type_; }
    std::int32_t backColor() const override { return back_; }
    std::int32_t foreColor() const override { return fore_; }
    void setForeColor(std::int32_t colour) override { fore_ = colour; }
    void setDrawStyle(std::int16_t style) override { style_ = style; }

    void cls() override
    {
        record(Kind::Cls, 0, 0, 0, 0);
        x_ = y_ = 0;
    }
    void moveTo(float x, float y) override
    {
        record(Kind::MoveTo, x_, y_, x, y);
        x_ = x;
        y_ = y;
    }
    void lineTo(float x, float y) override
    {
        record(Kind::LineTo, x_, y_, x, y);
        x_ = x;
        y_ = y;
    }
    void line(float x1, float y1, float x2, float y2) override
    {
        record(Kind::Line, x1, y1, x2, y2);
        x_ = x2;
        y_ = y2;
    }
    void box(float x1, float y1, float x2, float y2) override { record(Kind::Box, x1, y1, x2, y2); }
    void refresh() override { record(Kind::Refresh, x_, y_, x_, y_); }

private:
    void record(Kind kind, float x1, float y1, float x2, float y2)
    {
        ops.push_back(Op{kind, x1, y1, x2, y2, fore_, style_});
    }

    std::string type_;
    std::int32_t back_;
    std::int32_t fore_ = 0;
    std::int16_t style_ = 0;
    float x_ = 0;
    float y_ = 0;
};

}  // namespace testing_support
