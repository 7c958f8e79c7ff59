// The generated state catalogue and its copy, with the enumerant names, in master.
#include "records/records.h"

#include "records/mmaps.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace {

// kind, first_enum, second_enum, third_enum, type, count and name of a row, as one text.
std::string row_text(const state_row &r)
{
    char text[400];
    snprintf(text, sizeof text, "%d %X %X %X %d %d %s", r.kind, (unsigned)r.first_enum,
             (unsigned)r.second_enum, (unsigned)r.third_enum, r.type, r.count, r.name);
    return text;
}

std::string row_named(const char *name)
{
    for (const state_row &row : state_catalogue)
        if (strcmp(row.name, name) == 0)
            return row_text(row);
    return "none";
}

TEST(StateCatalogue, KindsInTheirRowsAndTheRowsThatStandAsTheyAre)
{
    EXPECT_EQ(row_text(state_catalogue[0]), "1 D5B FFFFFFFF 0 5 1 glGet(GL_ACCUM_ALPHA_BITS)");
    EXPECT_EQ(row_text(state_catalogue[221]), "1 D17 FFFFFFFF 0 5 1 glGet(GL_ZOOM_Y)");
    EXPECT_EQ(row_text(state_catalogue[222]), "2 3000 FFFFFFFF 0 5 4 glGetClipPlane(GL_CLIP_PLANE0)");
    EXPECT_EQ(row_text(state_catalogue[228]), "3 4000 1200 FFFFFFFF 5 4 glGetLight(GL_LIGHT0, GL_AMBIENT)");
    EXPECT_EQ(row_text(state_catalogue[361]), "4 DB8 A01 FFFFFFFF 5 2 glGetMap(GL_MAP2_VERTEX_4, GL_ORDER)");
    EXPECT_EQ(row_text(state_catalogue[381]), "6 C72 FFFFFFFF 0 5 1 glGetPixelMap(GL_PIXEL_MAP_I_TO_R)");
    EXPECT_EQ(row_text(state_catalogue[382]), "7 FFFFFFFF 0 0 6 128 glGetPolygonStipple()");
    EXPECT_EQ(row_text(state_catalogue[410]), "10 DE1 2803 FFFFFFFF 2 1 glGetTexParameter(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T)");

    EXPECT_EQ(row_named("glGet(GL_FOG)"), "1 B60 FFFFFFFF 0 5 1 glGet(GL_FOG)");
    EXPECT_EQ(row_named("glGet(GL_LOGIC_OP)"), "1 BF1 FFFFFFFF 0 1 1 glGet(GL_LOGIC_OP)");
    EXPECT_EQ(row_named("glGet(GL_INDEX_LOGIC_OP)"), "1 BF1 FFFFFFFF 0 1 1 glGet(GL_INDEX_LOGIC_OP)");
    EXPECT_EQ(row_named("glGet(GL_MAP2_GRID_DOMAIN)"), "1 DD2 FFFFFFFF 0 5 4 glGet(GL_MAP2_GRID_DOMAIN)");
    EXPECT_EQ(row_named("glGet(GL_MAP2_GRID_SEGMENTS)"), "1 DD3 FFFFFFFF 0 5 2 glGet(GL_MAP2_GRID_SEGMENTS)");
    EXPECT_EQ(row_named("glGet(GL_POLYGON_MODE)"), "1 B40 FFFFFFFF 0 2 2 glGet(GL_POLYGON_MODE)");
    EXPECT_EQ(row_named("glGetPixelMap(GL_PIXEL_MAP_R_TO_R)"), "none");
    EXPECT_EQ(std::count_if(std::begin(state_catalogue), std::end(state_catalogue),
                            [](const state_row &row) { return row.type == 3; }), 1);
}

TEST(MasterStart, CopiesTheCatalogueAndZeroesTheSpareEnumerantRows)
{
    master *table = (master *)block_alloc(sizeof(master));
    memset((void *)table, 0xAB, sizeof(master));
    fill_master(table, 7);
    EXPECT_EQ(memcmp(table->state_rows, state_catalogue, sizeof state_catalogue), 0);
    EXPECT_EQ(table->enumerants[0].value, 0x600);
    EXPECT_STREQ(table->enumerants[0].name, "GL_2D");
    EXPECT_STREQ(table->enumerants[ENUMERANT_ROWS_COPIED - 1].name, "GL_ZOOM_Y");
    EXPECT_EQ(memcmp(table->enumerants, enumerant_table, sizeof enumerant_table), 0);
    const uint8_t *spare = (const uint8_t *)&table->enumerants[ENUMERANT_ROWS_COPIED];
    const uint8_t *end = (const uint8_t *)&table->enumerants[ENUMERANT_ROWS];
    EXPECT_EQ(std::count(spare, end, 0), end - spare);
    block_free(table);
}

} // namespace
