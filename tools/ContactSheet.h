#pragma once

#include <string>
#include <vector>

#include "Output.h"
#include "RasterImage.h"

namespace LqTool {

// A PNG page of labelled pictures in a grid, drawn with cairo.
class ContactSheet {
public:
    ContactSheet(std::string title, int columns, int cellWidth, int cellHeight);

    // Adds a picture in the next cell, centred, with a label under it.
    void Add(const LqExample::RasterImage& picture, const std::string& label);
    // Starts the next row (a new row of cells with a heading).
    void NewRow(const std::string& heading);
    // Writes the sheet to `path`; a sheet taller than one page is spread
    // over pages named after `path` with -1, -2, ... before the extension.
    // The pages are replaced together or not at all. `pages` gets each page
    // once it is written and checked, so on a failure the next one is the
    // page that failed.
    bool Save(const std::string& path, std::vector<std::string>& pages, std::string& error) const;
    // The same as part of a larger piece of work: the pages join `batch`,
    // and replace their targets when it is committed.
    bool Write(const std::string& path, OutputBatch& batch, std::vector<std::string>& pages, std::string& error) const;
    // The files Save writes for `path`.
    std::vector<std::string> PagePaths(const std::string& path) const;
    int GetCellCount() const { return static_cast<int>(cells_.size()); }

    // The tallest page, in pixels (cairo cannot draw past 32767).
    static constexpr int maxPageHeight = 4096;

private:
    struct Cell {
        LqExample::RasterImage picture;
        std::string label;
        int row;
        int column;
    };
    std::string title_;
    int columns_;
    int cellWidth_;
    int cellHeight_;
    std::vector<Cell> cells_;
    std::vector<std::string> headings_;  // one per row
    int column_ = 0;

    int RowHeight() const;
    int RowsPerPage() const;
    // The PNG bytes of the rows [firstRow, endRow).
    std::string DrawPage(int firstRow, int endRow, const std::string& title) const;
};

// Gives back the font caches that labels fill; call once no cairo object is left.
void ReleaseTextCaches();


}  // namespace LqTool
