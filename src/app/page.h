#pragma once

namespace zemrak {

/// The pages of the main window, in the order of its sidebar.
enum class Page
{
    Overview,
    Printers,
    Designer,
    Sites,
    Jobs,
    Alerts,
    Docs,
    Settings
};

} // namespace zemrak
