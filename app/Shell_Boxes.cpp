// The main form's two boxes: "Support", whose links come from an entry of
// the resources archive (a deployment points them at its own pages without a
// rebuild), and "About".
#include "app/Shell.h"
#include "app/Shell_Version.h"

#include "host/Host.h"
#include "ui/MessageBox.h"

#include <sstream>
#include <utility>

namespace {

using Link = std::pair<std::string, std::string>;  // caption, address

std::vector<Link> SupportLinks(Shell* shell) {
    const std::vector<uint8_t> bytes = Resources_LoadWhole(shell->ui.get(), kSupportLinksEntry);
    std::istringstream in(std::string(bytes.begin(), bytes.end()));
    std::vector<Link> links;
    for (std::string line; std::getline(in, line);) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        const size_t tab = line.find('\t');
        if (line.empty() || line[0] == '#' || tab == std::string::npos || tab == 0) continue;
        links.emplace_back(line.substr(0, tab), line.substr(tab + 1));
    }
    return links;
}

void OnSupport(Toolkit*, uint32_t button, void* user) {
    const std::vector<Link> links = SupportLinks(static_cast<Shell*>(user));
    if (button < links.size()) Host_Call("os", "OS_ShowURL", const_cast<char*>(links[button].second.c_str()));
}

}  // namespace

void Shell_ShowSupport(Shell* shell) {
    std::vector<std::string> captions;
    for (const Link& link : SupportLinks(shell)) captions.push_back(link.first);
    captions.push_back("Close");
    MessageBox_ShowLabels(shell->ui.get(), "Support",
                          "Questions, tutorials and the people who use Pellucida: each button opens the page "
                          "in your web browser.",
                          kIconInformation, OnSupport, shell, captions);
}

void Shell_ShowAbout(Shell* shell) {
    std::string text = "Pellucida ";
    text += kPellucidaVersion;
    text += " (build ";
    text += kPellucidaBuild;
    text +=
        ")\nProcessing for stacked deep-sky images.\n\n"
        "Free software under the GNU General Public License, version 3 or later.\n"
        "It ships LodePNG (zlib licence), LZ4 (BSD 2-clause), stb (MIT), SDL2 (zlib licence) and the "
        "DejaVu Sans font (Bitstream Vera licence); their texts are in THIRD_PARTY_NOTICES.md.";
    MessageBox_Show(shell->ui.get(), "About Pellucida", text.c_str(), kMessageBoxInformation, nullptr,
                    nullptr, 1, "OK");
}
