#pragma once
// The page application's modules as the browser will fetch them: which module imports which, read
// from the modules themselves, so that index.html can ask for the whole static graph at once
// (`<link rel="modulepreload">`) instead of the browser finding it one chain of imports at a time.

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace WebModules {

/// The modules a module's source imports statically (`import … from './x.js'`, `import './x.js'`,
/// `export … from './x.js'`), as the file names they name in the same folder ("x.js"), in the order
/// they appear. Dynamic `import()`, `import.meta`, and specifiers that are not a plain file of the
/// same folder ("./name.js") are not part of it; comments, strings and template literals are skipped.
std::vector<std::string> imports(std::string_view source);

/// Every module the entry module (a file name in folder) reaches through static imports, entry
/// first, then breadth first; a module that cannot be read is listed but not followed.
std::vector<std::string> graph(const std::filesystem::path& folder, const std::string& entry);

/// The page's HTML with a `<link rel="modulepreload" href="/NAME">` for every module reached from
/// each `<script type="module" src="/NAME">` it holds (the entry itself excepted: its script tag
/// asks for it), put before that script tag. A page without a module script is returned as it is.
std::string withPreloads(const std::string& html, const std::filesystem::path& folder);

}  // namespace WebModules
