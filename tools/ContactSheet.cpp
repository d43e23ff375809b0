#include "ContactSheet.h"

#include <cairo.h>
#include <fontconfig/fontconfig.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <memory>

#include "CairoPicture.h"
#include "Output.h"

namespace LqTool {

using LqExample::RasterImage;

namespace {

constexpr int titleHeight = 34;
constexpr int headingHeight = 22;
constexpr int labelHeight = 30;
constexpr int padding = 6;

void DrawText(cairo_t* context, double x, double y, double size, const std::string& text, double maxWidth)
{
    cairo_set_font_size(context, size);
    cairo_text_extents_t extents;
    cairo_text_extents(context, text.c_str(), &extents);
    if (extents.width > maxWidth && extents.width > 0)
        cairo_set_font_size(context, size * maxWidth / extents.width);
    cairo_move_to(context, x, y);
    cairo_show_text(context, text.c_str());
}

}  // namespace

ContactSheet::ContactSheet(std::string title, int columns, int cellWidth, int cellHeight)
    : title_(std::move(title)), columns_(columns), cellWidth_(cellWidth), cellHeight_(cellHeight)
{
}

void ContactSheet::NewRow(const std::string& heading)
{
    headings_.push_back(heading);
    column_ = 0;
}

void ContactSheet::Add(const RasterImage& picture, const std::string& label)
{
    if (headings_.empty() || column_ == columns_)
        NewRow(headings_.empty() ? "" : headings_.back());
    cells_.push_back({picture, label, static_cast<int>(headings_.size()) - 1, column_++});
}

int ContactSheet::RowHeight() const
{
    return headingHeight + cellHeight_ + labelHeight;
}

int ContactSheet::RowsPerPage() const
{
    return std::max(1, (maxPageHeight - titleHeight - padding) / RowHeight());
}

std::string ContactSheet::DrawPage(int firstRow, int endRow, const std::string& title) const
{
    const int rowHeight = RowHeight();
    const int width = columns_ * (cellWidth_ + padding) + padding;
    const int height = titleHeight + (endRow - firstRow) * rowHeight + padding;
    Surface sheet(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height));
    Context context(cairo_create(sheet.get()));
    cairo_set_source_rgb(context.get(), 1, 1, 1);
    cairo_paint(context.get());
    cairo_select_font_face(context.get(), "sans-serif", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_BOLD);
    cairo_set_source_rgb(context.get(), 0.1, 0.1, 0.1);
    DrawText(context.get(), padding, 24, 18, title, width - 2 * padding);
    for (int row = firstRow; row < endRow; ++row)
        DrawText(context.get(), padding, titleHeight + static_cast<double>(row - firstRow) * rowHeight + 16, 13,
                 headings_[static_cast<std::size_t>(row)], width - 2 * padding);
    cairo_select_font_face(context.get(), "sans-serif", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
    for (const Cell& cell : cells_) {
        if (cell.row < firstRow || cell.row >= endRow)
            continue;
        const double left = padding + cell.column * (cellWidth_ + padding);
        const double top = titleHeight + (cell.row - firstRow) * rowHeight + headingHeight;
        cairo_set_source_rgb(context.get(), 0.85, 0.85, 0.85);
        cairo_rectangle(context.get(), left - 0.5, top - 0.5, cellWidth_ + 1, cellHeight_ + 1);
        cairo_set_line_width(context.get(), 1);
        cairo_stroke(context.get());
        if (!cell.picture.IsEmpty()) {
            Surface picture = PictureSurface(cell.picture);
            cairo_save(context.get());
            cairo_rectangle(context.get(), left, top, cellWidth_, cellHeight_);
            cairo_clip(context.get());
            cairo_set_source_surface(context.get(), picture.get(), left + (cellWidth_ - cell.picture.width) / 2,
                                     top + (cellHeight_ - cell.picture.height) / 2);
            cairo_paint(context.get());
            cairo_restore(context.get());
        }
        cairo_set_source_rgb(context.get(), 0.15, 0.15, 0.15);
        const auto split = cell.label.find('\n');
        DrawText(context.get(), left, top + cellHeight_ + 12, 10, cell.label.substr(0, split), cellWidth_);
        if (split != std::string::npos)
            DrawText(context.get(), left, top + cellHeight_ + 25, 10, cell.label.substr(split + 1), cellWidth_);
    }
    cairo_surface_flush(sheet.get());
    std::string bytes;
    const auto append = [](void* closure, const unsigned char* data, unsigned int length) {
        static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(data), length);
        return CAIRO_STATUS_SUCCESS;
    };
    if (cairo_surface_write_to_png_stream(sheet.get(), append, &bytes) != CAIRO_STATUS_SUCCESS)
        bytes.clear();
    return bytes;
}

std::vector<std::string> ContactSheet::PagePaths(const std::string& path) const
{
    const int rows = static_cast<int>(headings_.size());
    const int perPage = RowsPerPage();
    const int pageCount = std::max(1, (rows + perPage - 1) / perPage);
    if (pageCount == 1)
        return {path};
    const std::filesystem::path base(path);
    std::vector<std::string> paths;
    for (int page = 1; page <= pageCount; ++page)
        paths.push_back(
            (base.parent_path() / (base.stem().string() + "-" + std::to_string(page) + base.extension().string()))
                .string());
    return paths;
}

bool ContactSheet::Write(const std::string& path, OutputBatch& batch, std::vector<std::string>& pages,
                         std::string& error) const
{
    const int rows = static_cast<int>(headings_.size());
    const int perPage = RowsPerPage();
    const std::vector<std::string> files = PagePaths(path);
    const int pageCount = static_cast<int>(files.size());
    for (int page = 0; page < pageCount; ++page) {
        const std::string& file = files[static_cast<std::size_t>(page)];
        std::string title = title_;
        if (pageCount > 1)
            title += " (page " + std::to_string(page + 1) + " of " + std::to_string(pageCount) + ")";
        const std::string bytes = DrawPage(page * perPage, std::min(rows, (page + 1) * perPage), title);
        if (bytes.empty()) {
            error = "the page cannot be drawn";
            return false;
        }
        if (!batch.Add(file, bytes, error))
            return false;
        pages.push_back(file);
    }
    return true;
}

bool ContactSheet::Save(const std::string& path, std::vector<std::string>& pages, std::string& error) const
{
    OutputBatch batch;
    return Write(path, batch, pages, error) && batch.Commit(error);
}

}  // namespace LqTool

namespace LqTool {

void ReleaseTextCaches()
{
    cairo_debug_reset_static_data();
    FcFini();
}

}  // namespace LqTool
