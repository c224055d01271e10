// The panel script (panel/Quillo.jsx) run under node with small stand-ins for the host's script UI
// and external objects, fed the plug-in's real status script as the command-line host prints it.
//   node panel_test.js <Quillo.jsx> <hostsim> <assets/icons.txt>
'use strict';
const test = require('node:test');
const assert = require('node:assert');
const fs = require('node:fs');
const os = require('node:os');
const path = require('node:path');
const vm = require('node:vm');
const {execFileSync} = require('node:child_process');

const [panelFile, hostsim, iconTable] = process.argv.slice(2);
const source = fs.readFileSync(panelFile, 'latin1');

// The plug-in's answer to "requeststatus" after "shortcut 3", from a session in a throw-away home.
function hostStatusScript() {
    const home = fs.mkdtempSync(path.join(os.tmpdir(), 'quillo-panel-'));
    try {
        const env = {...process.env, HOME: home, XDG_CONFIG_HOME: `${home}/.config`,
                     XDG_DATA_HOME: `${home}/.local`};
        const args = ['--root', `${home}/disk`, '--execute', 'shortcut', '3', '--execute', 'requeststatus'];
        const out = execFileSync(hostsim, args, {env, encoding: 'latin1', maxBuffer: 64 << 20});
        const match = /"requeststatus"\) -> 0, script:\n([\s\S]*?)^scripts run by the plug-in/m.exec(out);
        assert.ok(match, `no status script in:\n${out.slice(0, 2000)}`);
        return match[1];
    } finally {
        fs.rmSync(home, {recursive: true, force: true});
    }
}
const statusScript = hostStatusScript();
const statusVars = {};
vm.runInNewContext(statusScript, statusVars);

// Each toolbar icon (and the news badge) at an eighth of its pixel size: frames side by side.
const iconSizes = {};
for (const line of fs.readFileSync(iconTable, 'utf8').split('\n')) {
    const f = line.trim().split(/\s+/);
    if (/^[A-Za-z]/.test(line) && f.length === 7)
        iconSizes[f[0]] = {frames: +f[1], w: Math.trunc(f[3] * f[2] / 8), h: Math.trunc(f[4] * f[2] / 8)};
}
const toolbarIcons = ['ScreenshotIcon', 'ExportIcon', 'GalleryIcon', 'PrefIcon', 'LogoIcon'];
const toolbarWords = ['screenshot', 'export', 'gallery', 'preferences', 'logo'];

// --- stand-ins -------------------------------------------------------------------------------------
class Control {
    constructor(type, args) {
        Object.assign(this, {type, args, children: [], visible: true, enabled: true, text: '', helpTip: ''});
        this.layout = {layout() {}, resize() {}};
        this.drawn = [];
        this.graphics = {drawImage: (image, x, y) => this.drawn.push([image, x, y])};
        if (type === 'statictext' || type === 'button') this.text = args[0];
        if (type === 'iconbutton' || type === 'image') this.image = args[0];
        if (type === 'dropdownlist') {
            this.items = args[0].map((text, index) => ({text, index}));
            let selected = null;
            Object.defineProperty(this, 'selection', {
                get: () => selected,
                // assigning fires no onChange here; the panel must not rely on it either way
                set: (v) => {
                    selected = typeof v === 'number' ? this.items[v] : v;
                },
            });
        }
    }
    add(type, bounds, ...args) {
        const child = new Control(type, args);
        this.children.push(child);
        return child;
    }
    all(type) {
        return this.children.flatMap((c) => (c.type === type ? [c] : []).concat(c.all(type)));
    }
}
class Panel extends Control {}
class Window extends Control {
    constructor(kind, title) {
        super('window', [kind, title]);
        Window.last = this;
    }
    center() {}
    show() { this.shown = true; }
}
function decodePng(binary) {
    for (let i = 0; i < binary.length; i++)
        if (binary.charCodeAt(i) > 255) throw new Error('not a binary string');
    const bytes = Buffer.from(binary, 'latin1');
    const signature = bytes.toString('hex', 0, 8) === '89504e470d0a1a0a';
    if (bytes.length < 24 || !signature || bytes.toString('latin1', 12, 16) !== 'IHDR')
        throw new Error('not a PNG');
    return {source: binary, size: [bytes.readUInt32BE(16), bytes.readUInt32BE(20)]};
}
class Folder {
    constructor(p) { this.fsName = p; }
    get parent() { return new Folder(path.dirname(this.fsName)); }
}

const root = '/Applications/Host 2024';
// Runs the panel with `accepts` deciding which library paths load; `engineRuns` has the plug-in's
// status script run by the engine into the global object instead of returned as text.
function runPanel({docked = true, accepts = () => true, engineRuns = false, news = [2, 0]} = {}) {
    const paths = [], calls = [];
    const context = vm.createContext({Panel, Window, File: Folder, Folder, ScriptUI: {newImage: decodePng}});
    context.Folder.appPackage = new Folder('/Applications/Elsewhere/Host.app');
    const global = vm.runInContext('this', context);
    context.$ = {fileName: `${root}/Scripts/ScriptUI Panels/Quillo.jsx`, global};
    context.ExternalObject = function (path) {
        paths.push(path);
        if (!accepts(path)) throw new Error(`cannot load ${path}`);
        this.execute = (...args) => {
            calls.push(args);
            if (args[0] === 'requeststatus')
                return engineRuns ? void vm.runInContext(statusScript, context) : statusScript;
            if (args[0] === 'news') return news.length > 1 ? news.shift() : news[0];
            return undefined;
        };
    };
    context.__host = docked ? new Panel('panel', []) : context;
    Window.last = null;
    const wrapped = `(function () {\n${source}\n}).call(__host)`;
    vm.runInContext(wrapped, context, {filename: panelFile, lineOffset: -1});
    return {panel: docked ? context.__host : Window.last, paths, calls};
}

// --- tests -----------------------------------------------------------------------------------------
test('docked: buttons call their words, icons are the status PNGs, the chord is the stored one', () => {
    const {panel, paths, calls} = runPanel();
    assert.deepStrictEqual(paths, [`lib:${root}/Plug-ins/Quillo.plugin`]);
    assert.ok(!panel.all('statictext').some((t) => /not installed|could not/.test(t.text)));

    const buttons = panel.all('iconbutton');
    assert.strictEqual(buttons.length, toolbarWords.length);
    buttons.forEach((button, i) => {
        const size = iconSizes[toolbarIcons[i]];
        assert.strictEqual(button.image.source, statusVars[`button${i}Hex`], `button ${i} shows icon ${i}`);
        assert.deepStrictEqual(button.image.size, [size.w * size.frames, size.h], toolbarIcons[i]);
        assert.deepStrictEqual(Array.from(button.preferredSize), [size.h, size.h]);
        // normal, hover and pressed frames of the strip
        const states = [[{}, 0], [{mouseOver: true}, 1], [{mouseOver: true, leftButtonPressed: true}, 2]];
        for (const [state, frame] of states) {
            button.onDraw(state);
            assert.deepStrictEqual(button.drawn.pop().slice(1), [-frame * size.h, 0]);
        }
        calls.length = 0;
        button.onClick();
        assert.deepStrictEqual(calls, [[toolbarWords[i]], ['news']]);
    });

    const [badge] = panel.all('image');
    const news = iconSizes.NewsIcon;
    assert.deepStrictEqual(badge.image.size, [news.w * news.frames, news.h]);
    assert.strictEqual(badge.image.source, statusVars.button5Hex);
    assert.strictEqual(badge.visible, false, 'the news count fell to 0 after the first click');

    const [chooser] = panel.all('dropdownlist');
    assert.strictEqual(chooser.selection.index, 3);
    calls.length = 0;
    chooser.selection = 1;
    chooser.onChange();
    assert.deepStrictEqual(calls, [['shortcut', 1]]);
});

test('floating palette: status run by the engine, plug-in found by bare name, news badge shown', () => {
    const accepts = (s) => s === 'lib:Quillo';
    const {panel, paths, calls} = runPanel({docked: false, engineRuns: true, news: [5], accepts});
    assert.deepStrictEqual(paths, [`lib:${root}/Plug-ins/Quillo.plugin`,
                                   'lib:/Applications/Elsewhere/Plug-ins/Quillo.plugin', 'lib:Quillo']);
    assert.deepStrictEqual(calls, [['requeststatus'], ['news']]);
    assert.ok(panel && panel.args[0] === 'palette' && panel.shown);
    assert.deepStrictEqual(panel.all('iconbutton').map((b) => b.image.source),
                           toolbarWords.map((w, i) => statusVars[`button${i}Hex`]));
    const [badge] = panel.all('image');
    assert.ok(badge.visible && /5/.test(badge.helpTip));
    assert.strictEqual(panel.all('dropdownlist')[0].selection.index, 3);
});

test('without the plug-in the panel says so and does not throw', () => {
    const {panel, paths} = runPanel({accepts: () => false});
    assert.strictEqual(paths.length, 3);
    const texts = panel.all('statictext').map((t) => t.text);
    assert.ok(texts.length === 1 && /plug-in is not installed/.test(texts[0]), texts.join('|'));
    assert.strictEqual(panel.all('iconbutton').length + panel.all('button').length, 0);
});

// ES3 and nothing newer from the library: the host's engine has neither.
test('the panel is ES3', () => {
    let acorn = null;
    for (const id of ['acorn', 'internal/deps/acorn/acorn/dist/acorn']) {
        try {
            acorn = require(id);
            break;
        } catch {}
    }
    if (acorn) acorn.parse(source, {ecmaVersion: 3});
    // comments and strings out of the way first
    const code = source.replace(/\/\/[^\n]*|\/\*[\s\S]*?\*\/|"(?:\\.|[^"\\\n])*"|'(?:\\.|[^'\\\n])*'/g, '""');
    const newer = new RegExp([/\b(let|const|class|of)\b|=>|`|\.\.\./.source,
                              /\bJSON\b|\bObject\.(keys|create|defineProperty)\b|\bArray\.isArray\b/.source,
                              /\.(forEach|map|filter|reduce|some|every|indexOf|trim|bind)\s*\(/.source].join('|'));
    const found = newer.exec(code);
    assert.ok(!found, found && `"${found[0]}" at ${code.slice(0, found.index).split('\n').length}`);
});
