// The page application's module graph as `serve` reads it from the modules: what counts as a static
// import, the graph from an entry, and the preload links put into the page.

#include "TestSupport.h"

#include "host/WebModules.h"

#include <gtest/gtest.h>

namespace {

using Names = std::vector<std::string>;

TEST(WebModules, ReadsEveryFormOfStaticImport)
{
    EXPECT_EQ(WebModules::imports("import { a } from './a.js';\n"
                                  "import b, { c as d } from \"./b.js\";\n"
                                  "import * as e from './e.js';\n"
                                  "import './side.js';\n"
                                  "import {\n  f,\n  g,\n} from './multi-line.js';\n"
                                  "export { h } from './h.js';\n"
                                  "export * from './star.js';\n"
                                  "export * as ns from './ns.js';\n"
                                  "import{tight}from'./tight.js'\n"),
              (Names{"a.js", "b.js", "e.js", "side.js", "multi-line.js", "h.js", "star.js", "ns.js", "tight.js"}));
}

TEST(WebModules, SkipsWhatOnlyLooksLikeAnImport)
{
    EXPECT_EQ(WebModules::imports("// import { a } from './comment.js';\n"
                                  "/* import './block.js';\n import b from './block2.js' */\n"
                                  "const s = \"import x from './string.js'\";\n"
                                  "const t = 'it\\'s import \\'./escaped.js\\'';\n"
                                  "const u = `import ${\"y\"} from './template.js' ${ { a: '}' }.a }`;\n"
                                  "const r = /import '.\\/regex.js'/g;\n"
                                  "const later = import('./dynamic.js');\n"
                                  "const here = import.meta.url;\n"
                                  "const o = { import: 1 }; o.import;\n"
                                  "export const v = 2;\n"
                                  "export function w() { return 'from \\'./not.js\\''; }\n"
                                  "export { v as z };\n"
                                  "import real from './real.js';\n"),
              (Names{"real.js"}));
}

TEST(WebModules, TakesOnlyPlainFilesOfTheSameFolder)
{
    EXPECT_EQ(WebModules::imports("import a from '../up.js';\n"
                                  "import b from '/absolute.js';\n"
                                  "import c from 'bare';\n"
                                  "import d from './sub/dir.js';\n"
                                  "import e from './style.css';\n"
                                  "import f from './odd name.js';\n"
                                  "import g from './.js';\n"
                                  "import h from './ok_name-1.js';\n"),
              (Names{"ok_name-1.js"}));
}

TEST(WebModules, UnfinishedSourceEndsTheScanWithoutHarm)
{
    EXPECT_EQ(WebModules::imports("import a from './a.js';\nconst s = 'never closed"), (Names{"a.js"}));
    EXPECT_EQ(WebModules::imports("import a from './a.js'; /* never closed"), (Names{"a.js"}));
    EXPECT_EQ(WebModules::imports("const t = `${ never closed"), Names{});
    EXPECT_EQ(WebModules::imports("import { a from"), Names{});
    EXPECT_EQ(WebModules::imports("import"), Names{});
    EXPECT_EQ(WebModules::imports("export {"), Names{});
    EXPECT_EQ(WebModules::imports(""), Names{});
}

TEST(WebModules, EveryCutOfASourceIsReadWithoutHarm)
{
    const std::string source = "import { a } from './a.js';\n// c\n/* b */ const s = 'x\\'y' + \"z\" + `t${ {u: `v${1}`} }`;\n"
                               "const r = /[/]\\//g; export * from './b.js'; import('./c.js');\n";
    for (std::size_t length = 0; length <= source.size(); ++length) {
        std::vector<std::string> found = WebModules::imports(std::string_view(source).substr(0, length));
        EXPECT_LE(found.size(), 2u);
    }
    EXPECT_EQ(WebModules::imports(source), (Names{"a.js", "b.js"}));
}

TEST(WebModules, GraphIsBreadthFirstFromTheEntryAndStopsAtCycles)
{
    test::TempDir folder;
    test::writeFile(folder.path() / "main.js", "import './a.js';\nimport './b.js';\n");
    test::writeFile(folder.path() / "a.js", "import './c.js';\nimport './b.js';\n");
    test::writeFile(folder.path() / "b.js", "import './a.js';\n");  // a cycle: listed once
    test::writeFile(folder.path() / "c.js", "import './missing.js';\n");
    test::writeFile(folder.path() / "unused.js", "");
    EXPECT_EQ(WebModules::graph(folder.path(), "main.js"), (Names{"main.js", "a.js", "b.js", "c.js"}));
    EXPECT_EQ(WebModules::graph(folder.path(), "missing.js"), Names{});
}

TEST(WebModules, GraphLeavesOutLinksAsTheServerDoes)
{
    test::TempDir folder;
    test::writeFile(folder.path() / "main.js", "import './linked.js';\n");
    test::writeFile(folder.path() / "elsewhere.js", "");
    std::filesystem::create_symlink(folder.path() / "elsewhere.js", folder.path() / "linked.js");
    EXPECT_EQ(WebModules::graph(folder.path(), "main.js"), (Names{"main.js"}));
}

TEST(WebModules, PageGetsAPreloadLinkForEveryModuleItsScriptReaches)
{
    test::TempDir folder;
    test::writeFile(folder.path() / "main.js", "import { a } from './a.js';\n");
    test::writeFile(folder.path() / "a.js", "import './b.js';\n");
    test::writeFile(folder.path() / "b.js", "");
    std::string html = "<head>\n  <link rel=\"stylesheet\" href=\"/style.css\">\n"
                       "  <script type=\"module\" src=\"/main.js\"></script>\n</head>\n";
    EXPECT_EQ(WebModules::withPreloads(html, folder.path()),
              "<head>\n  <link rel=\"stylesheet\" href=\"/style.css\">\n"
              "  <link rel=\"modulepreload\" href=\"/a.js\">\n"
              "  <link rel=\"modulepreload\" href=\"/b.js\">\n"
              "  <script type=\"module\" src=\"/main.js\"></script>\n</head>\n");
}

TEST(WebModules, PageWithoutModuleScriptsIsLeftAsItIs)
{
    test::TempDir folder;
    test::writeFile(folder.path() / "main.js", "import './a.js';\n");
    for (std::string html : {std::string("<p>no scripts</p>"), std::string("<script src=\"/main.js\"></script>"),
                             std::string("<script type=\"module\" src=\"/main.js"),
                             std::string("<script type=\"module\" src=\"/../main.js\"></script>"), std::string()})
        EXPECT_EQ(WebModules::withPreloads(html, folder.path()), html);
}

TEST(WebModules, TwoScriptsShareTheirModulesOnce)
{
    test::TempDir folder;
    test::writeFile(folder.path() / "one.js", "import './shared.js';\n");
    test::writeFile(folder.path() / "two.js", "import './shared.js';\nimport './one.js';\n");
    test::writeFile(folder.path() / "shared.js", "");
    std::string html = "<script type=\"module\" src=\"/one.js\"></script><script type=\"module\" src=\"/two.js\"></script>";
    EXPECT_EQ(WebModules::withPreloads(html, folder.path()),
              "<link rel=\"modulepreload\" href=\"/shared.js\">\n<script type=\"module\" src=\"/one.js\"></script>"
              "<script type=\"module\" src=\"/two.js\"></script>");
}

}  // namespace
