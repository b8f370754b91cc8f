/**
 * Who may include and link whom, lowest room first: a room knows only rooms above it in this list. Each room also knows
 * itself, C++, POSIX and Qt Core.
 * @typedef {object} Room
 * @property {string} name
 * @property {RegExp} files its sources, by path; the first room that matches has a source
 * @property {string[]} targets what CMake calls it
 * @property {string[]} rooms whose headers it may include, and which it may link
 * @property {string[]} [qt] modules whose headers it may include, and which it may link
 * @property {string[]} [linksQt] modules that it may link for the headers of a room it knows, and not include itself
 * @property {string[]} [other] beginnings of other libraries' headers
 * @property {string} why its charter's reason
 */

/** @param {string} place */
const folder = (place) => new RegExp(`^${place}/`);

/** @type {Room[]} */
export const ROOMS = [
  { name: 'base', files: folder('src/base'), targets: ['zemrak_base'], rooms: [],
    why: 'time and rows are of use without printers, service or screen' },
  { name: 'model', files: folder('src/model'), targets: ['zemrak_model'], rooms: [],
    why: 'wire records are plain values: no network, and no meaning to anybody' },
  { name: 'health', files: folder('src/health'), targets: ['zemrak_health'], rooms: ['base', 'model'], qt: ['Gui'],
    why: 'verdicts and alerts do not know the network, processes, pages or the desktop' },
  { name: 'host', files: folder('src/host'), targets: ['zemrak_host'], rooms: ['base', 'model'],
    why: 'what is asked of the computer does not know which platform answers, nor how the service is reached' },
  { name: 'designer', files: folder('src/designer'), targets: ['zemrak_designer'], rooms: [],
    why: 'the designed receipt is a value with its arithmetic: no page, no printer' },
  { name: 'guide', files: folder('src/guide'), targets: ['zemrak_guide'], rooms: [],
    why: 'the integration guide is data: no page, no service' },
  { name: 'textrender', files: folder('src/textrender'), targets: ['zemrak_textrender', 'textrender'], rooms: [],
    qt: ['Gui'], why: 'the helper program draws text; the application and receipts are not its business' },
  { name: 'pdfrender', files: folder('src/pdfrender'), targets: ['pdfrender'], rooms: [], other: ['poppler/'],
    why: 'the helper program draws pages; the application and printers are not its business' },
  { name: 'platform/factory', files: /^src\/platform\/platform\.h$/, targets: [], rooms: ['health', 'host'],
    why: 'it declares how the interfaces are made, for whichever platform' },
  { name: 'platform/none', files: folder('src/platform/none'), targets: ['zemrak_platform_none'],
    rooms: ['health', 'host', 'platform/factory'], why: 'a platform that does nothing needs the interfaces alone' },
  { name: 'platform', files: /^src\/platform\/(?!none\/|platform\.h$)/, targets: ['zemrak_platform'],
    rooms: ['base', 'health', 'host', 'platform/factory', 'platform/none'],
    qt: ['DBus', 'Gui', 'Network', 'Widgets'], other: ['xcb/'],
    why: 'it fulfils the interfaces of host/ and health/ and holds no policy: no service, no page' },
  { name: 'app', files: /^src\/app\/(?!(main|appdelegate|platformhost)\.)/, targets: ['zemrak_app'],
    rooms: ['base', 'model', 'health', 'host', 'guide'], qt: ['Network'],
    why: 'the running application gets its platform handed in, and does not know how anything looks' },
  { name: 'program', files: /^src\/app\/(main|appdelegate|platformhost)\./, targets: ['zemrak-printer'],
    rooms: ['base', 'health', 'host', 'guide', 'platform/factory', 'platform', 'app'], qt: ['Gui', 'Widgets'],
    why: 'the composition root makes the others and loads the window as a plugin' },
  { name: 'ui/presenters', files: folder('src/ui/presenters'), targets: ['zemrak_presenters'],
    rooms: ['base', 'model', 'health', 'host', 'designer', 'guide', 'app'], qt: ['Gui', 'QmlIntegration'],
    linksQt: ['Network'], other: ['unicode/'],
    why: 'the rules of the pages hold without QML: its types may be named to it, and no more' },
  { name: 'ui/kit', files: folder('src/ui/kit'), targets: ['zemrak_kit', 'zemrak_kit_qml'], rooms: ['host'],
    qt: ['Gui', 'Qml', 'QmlIntegration', 'Quick', 'Svg'],
    why: 'theme and controls know nothing of printers, the service or the application' },
  { name: 'ui/window', files: folder('src/ui/window'),
    targets: ['zemrak_view', 'zemrak_window', 'zemrak_window_qml', 'zemrak-window'],
    rooms: ['base', 'model', 'host', 'designer', 'app', 'ui/presenters', 'ui/kit'],
    qt: ['Gui', 'Qml', 'QmlIntegration', 'Quick'],
    why: 'the window shows what presenters say: no processes, no network, no platform' },
  { name: 'twin/paper', files: folder('twin/paper'), targets: ['zemrak_paper'], rooms: [], qt: ['Gui'],
    other: ['zint.h'], why: 'paper is drawn from bytes alone: no network, no time, no printer' },
  { name: 'twin', files: /^twin\/(?!paper\/|window\/|main\.)/, targets: ['zemrak_twin'], rooms: ['twin/paper'],
    qt: ['HttpServer', 'Network'], why: 'a printer in software knows neither the application nor the service' },
  { name: 'twin/window', files: folder('twin/window'), targets: [], rooms: ['twin/paper', 'twin'],
    qt: ['Gui', 'Widgets'],
    why: 'the twin is shown with a few widgets, and neither with the application nor with its pages' },
  { name: 'twin/program', files: /^twin\/main\./, targets: ['paper-twin'],
    rooms: ['twin/paper', 'twin', 'twin/window'], qt: ['Gui', 'Widgets'],
    why: 'it puts the twin together, and is no part of the application' },
  { name: 'devicelink', files: folder('devicelink'), targets: ['zemrak_devicelink', 'devicelink'], rooms: [],
    qt: ['Bluetooth', 'DBus', 'Network', 'SerialPort'],
    why: 'the service\'s helper for devices carries bytes: no receipts, no application' },
];
