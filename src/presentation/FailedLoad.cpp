#include "presentation/FailedLoad.h"

#include "web/Url.h"

namespace ovel {

namespace {

// The site as the person knows it: its host, else the whole address, cut short to fit a line.
std::string siteOf(const std::string& address) {
    constexpr std::size_t longest = 120;
    const std::optional<Url> url = Url::fromEngine(address);
    std::string site = url && url->host() && !url->host()->empty() ? *url->host() : address;
    if (site.size() > longest) {
        std::size_t cut = longest;
        // Never inside a UTF-8 sequence.
        while (cut > 0 && (static_cast<unsigned char>(site[cut]) & 0xC0) == 0x80) {
            --cut;
        }
        site = site.substr(0, cut) + "…";
    }
    return site;
}

} // namespace

FailedLoadMessage failedLoadMessage(const LoadFailure& failure) {
    const std::string site = siteOf(failure.url);
    switch (failure.kind) {
    case LoadFailureKind::ConnectionRefused:
        return {"Can't reach this site",
                site + " refused to connect. The server may be down, or not running on this port."};
    case LoadFailureKind::HostNotFound:
        return {"Can't find this site",
                "No server called " + site + " could be found. Check the address for typos."};
    case LoadFailureKind::TimedOut:
        return {"This site took too long to answer",
                site + " did not send the page in time. It may be busy; try again later."};
    case LoadFailureKind::ConnectionLost:
        return {"The connection was interrupted",
                "The connection to " + site + " closed before the whole page arrived."};
    case LoadFailureKind::SecureConnectionFailed:
        return {"Can't make a secure connection",
                site + " did not complete a secure connection. It may not offer one."};
    case LoadFailureKind::PortBlocked:
        return {"This address is blocked",
                "Ovel Web does not connect to " + site +
                    " on this port: the port is kept for other services."};
    case LoadFailureKind::Other:
        break;
    }
    std::string detail = "The page from " + site + " could not be loaded.";
    if (!failure.description.empty()) {
        detail += " " + failure.description;
    }
    return {"This page could not be loaded", detail};
}

} // namespace ovel
