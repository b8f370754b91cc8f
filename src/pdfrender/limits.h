#pragma once

namespace zemrak::pdfrender {

/**
 * Bounds this process for good: 20 s of processor time and 1 GiB of memory. A document made to devour a computer
 * ends the helper, and nothing else. Memory is not bounded under the address sanitizer, which reserves terabytes.
 */
void limitThisProcess();

} // namespace zemrak::pdfrender
