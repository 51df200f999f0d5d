#include "formats/load_fabric.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "support/input_fixture.h"
#include "support/packed.h"

namespace fabscope::internal {
namespace {

class LoadFabricTest : public InputTest {
 protected:
  // The names of the nodes; the error if there is one.
  std::string Load(const std::string& bytes) {
    Write(bytes);
    return LoadPath(path);
  }
  std::string LoadPieces(const std::vector<std::string>& pieces,
                         Pieces::End end = Pieces::End::Whole) {
    const Pieces redirected(pieces, end);
    return LoadPath("-");
  }

  static std::string LoadPath(const std::string& from) {
    FabricBuilder builder;
    Warnings warnings;
    const regExp special("special");
    const MaybeError error = LoadFabric(from, nullptr, &special, builder, warnings);
    if (error) return error->Text();
    const auto fabric = builder.Build();
    std::string names;
    for (const IBNode& node : fabric->GetNodes()) {
      names.append(node.name).append(node.special ? "!;" : ";");
    }
    return names;
  }
};

constexpr const char* document =
    R"({"format":"fabscope-fabric","version":1,"nodes":[)"
    R"({"guid":"0x1","type":"ca","name":"z","numPorts":1},)"
    R"({"guid":"0x2","type":"ca","name":"special host","numPorts":1}]})";
constexpr const char* dump =
    "Ca\t1 \"H-1\"\t\t# \"z\"\n"
    "Ca\t1 \"H-2\"\t\t# \"special host\"\n";

TEST_F(LoadFabricTest, WhatBeginsWithABraceIsADocument) {
  EXPECT_EQ(Load(document), "z;special host;");
  EXPECT_EQ(Load(std::string(" \t\r\n\n  ") + document), "z;special host;");
  EXPECT_EQ(Load(std::string("\xef\xbb\xbf\n") + document), "z;special host;");
}

// A slow pipe may give next to nothing at first.
TEST_F(LoadFabricTest, TheBeginningMayComeInPieces) {
  EXPECT_EQ(LoadPieces({"\xef", "\xbb", "\xbf", " ", document}), "z;special host;");
  EXPECT_EQ(LoadPieces({"\xef\xbb", "\xbf", document}), "z;special host;");
  EXPECT_EQ(LoadPieces({"\xef\xbb", "\xbf", dump}), "special host!;z;");
  const std::string packed = Packed(document);
  EXPECT_EQ(LoadPieces({packed.substr(0, 1), packed.substr(1)}), "z;special host;");
  EXPECT_EQ(LoadPieces({"\xef\xbb"}),
            "<stdin>:1:1: no node found, expected a fabric document (JSON) or a topology dump as "
            "`ibnetdiscover` prints it");
}

TEST_F(LoadFabricTest, AFabricThatCannotBeReadToItsEndIsNoSmallerOne) {
  EXPECT_EQ(LoadPieces({}, Pieces::End::Failure), failed);
  EXPECT_EQ(LoadPieces({document}, Pieces::End::Failure), failed);
  EXPECT_EQ(LoadPieces({dump}, Pieces::End::Failure), failed);
  EXPECT_EQ(LoadPieces({"# d\n", dump}, Pieces::End::Failure), failed);
}

TEST_F(LoadFabricTest, AMissingFileIsNoEmptyOne) {
  EXPECT_EQ(LoadPath("/nowhere/net.topo"), "/nowhere/net.topo: No such file or directory");
}

// Not even a fabric document has so many blanks in front.
TEST_F(LoadFabricTest, TheBeginningIsNotLookedForWithoutEnd) {
  EXPECT_EQ(Load(std::string(2 * Input::MostOfALine, ' ') + document),
            path + ":1:16777217: the line is longer than 16 MiB, which that of a fabric never is");
}

// A document tells itself which nodes are special.
TEST_F(LoadFabricTest, AnythingElseIsADump) {
  EXPECT_EQ(Load(dump), "special host!;z;");
  EXPECT_EQ(Load(std::string("# {\n") + dump), "special host!;z;");
  EXPECT_EQ(Load("[]\n"), path +
                              ":1:1: no node found, expected a fabric document (JSON) or a "
                              "topology dump as `ibnetdiscover` prints it");
}

TEST_F(LoadFabricTest, BothMayBePacked) {
  EXPECT_EQ(Load(Packed(document)), "z;special host;");
  EXPECT_EQ(Load(Packed(dump)), "special host!;z;");
}

TEST_F(LoadFabricTest, PlacesInAPackedFileAreThoseOfItsText) {
  EXPECT_EQ(Load(Packed("# a\n{\"nodes\":1}\nCa\tx\n")),
            path + ":3:4: not a number of ports, expected 0 to 255");
}

TEST_F(LoadFabricTest, APackedDumpThatWasCutIsNoSmallerFabric) {
  const std::string packed = Packed(dump);
  EXPECT_EQ(Load(packed.substr(0, packed.size() - 8)), path + ":3:1: " + damaged);
}

}  // namespace
}  // namespace fabscope::internal
