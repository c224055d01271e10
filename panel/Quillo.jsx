// Quillo's dockable panel: the popup's toolbar and the choice of the popup's key chord, for the host's
// "ScriptUI Panels" folder (Window > Quillo.jsx docks it; File > Scripts runs it as a floating palette).
// Every button goes through the plug-in's script object; the panel keeps no settings of its own.
// Plain ES3: the host's script engine knows nothing newer.
(function (host) {
    // The toolbar in the order of the status script's icon lines (button0Hex, button1Hex, ...); the
    // line after the last button is the news badge.
    var toolbar = [
        ["screenshot", "Screenshot of the composition's frame"],
        ["export", "Save the frame as PNG"],
        ["gallery", "Screenshot gallery"],
        ["preferences", "Preferences"],
        ["logo", "Quillo's page and news"]
    ];
    // The chords the plug-in's "shortcut" word chooses between, by index; 4 is the custom chord, which
    // only the preferences window can record, so it is listed only while it is the stored choice.
    var chords = ["Ctrl + Space", "Shift + Space", "Ctrl + Tab", "Shift + Tab"];
    var customChord = 4;

    // The installer puts this file in <host>/Scripts/ScriptUI Panels and the plug-in in
    // <host>/Plug-ins, so the plug-in is looked for next to where this file sits, then next to the
    // running application (for a copy of the panel run from elsewhere), and last by bare name in the
    // engine's own library search folders.
    function pluginPaths() {
        var paths = [];
        try {
            paths.push("lib:" + new File($.fileName).parent.parent.parent.fsName + "/Plug-ins/Quillo.plugin");
        } catch (e) {}
        try {
            paths.push("lib:" + Folder.appPackage.parent.fsName + "/Plug-ins/Quillo.plugin");
        } catch (e) {}
        paths.push("lib:Quillo");
        return paths;
    }

    function loadPlugin() {
        var paths = pluginPaths();
        for (var i = 0; i < paths.length; i++) {
            try {
                return new ExternalObject(paths[i]);
            } catch (e) {}
        }
        return null;
    }

    // The names the status script defines: shortcutValue, then button0Hex, button1Hex, ...
    function statusFrom(lookup) {
        var status = {shortcut: lookup("shortcutValue"), icons: []};
        for (var i = 0; typeof lookup("button" + i + "Hex") === "string"; i++)
            status.icons.push(lookup("button" + i + "Hex"));
        return status;
    }

    // The answer to "requeststatus" is script text; the engine either hands it over as text or runs it
    // itself into the global object, so both are read.
    function evaluateStatus(text) {
        eval(text);
        return statusFrom(function (name) {
            try {
                return eval(name);
            } catch (e) {
                return undefined;
            }
        });
    }

    function readStatus(plugin) {
        var answer = plugin.execute("requeststatus");
        if (typeof answer === "string")
            return evaluateStatus(answer);
        return statusFrom(function (name) {
            return $.global[name];
        });
    }

    function newImage(png) {
        try {
            return png ? ScriptUI.newImage(png) : null;
        } catch (e) {
            return null;
        }
    }

    // An icon is a strip of square state frames side by side (normal, hover, pressed, then disabled
    // when there are four); the button is one frame wide and draws the frame of its state.
    function addIconButton(parent, png, tip) {
        var image = newImage(png);
        if (!image)
            return parent.add("button", undefined, tip);
        var side = image.size[1];
        var frames = Math.max(1, Math.round(image.size[0] / side));
        var button = parent.add("iconbutton", undefined, image, {style: "toolbutton"});
        button.helpTip = tip;
        button.preferredSize = [side, side];
        button.onDraw = function (state) {
            var frame = state.leftButtonPressed ? 2 : state.mouseOver ? 1 : 0;
            if (!this.enabled && frames > 3)
                frame = 3;
            this.graphics.drawImage(image, -Math.min(frame, frames - 1) * side, 0);
        };
        return button;
    }

    function build(panel) {
        panel.orientation = "column";
        panel.alignChildren = ["left", "top"];
        var plugin = loadPlugin();
        if (!plugin) {
            panel.add("statictext", undefined,
                      "Quillo's plug-in is not installed: Quillo.plugin was not found in the Plug-ins " +
                          "folder. Run Quillo's installer, then restart the application.",
                      {multiline: true});
            return;
        }

        var message = null;
        function call(word, number) {
            try {
                return number === undefined ? plugin.execute(word) : plugin.execute(word, number);
            } catch (e) {
                if (message)
                    message.text = "Quillo: \"" + word + "\" failed (" + e + ")";
                return undefined;
            }
        }
        var status = {shortcut: 0, icons: []};
        try {
            status = readStatus(plugin);
        } catch (e) {}

        var bar = panel.add("group");
        bar.orientation = "row";
        bar.alignChildren = ["left", "center"];
        for (var i = 0; i < toolbar.length; i++) {
            addIconButton(bar, status.icons[i], toolbar[i][1]).onClick = (function (word) {
                return function () {
                    call(word);
                    refreshNews();
                };
            })(toolbar[i][0]);
        }
        var badgeImage = newImage(status.icons[toolbar.length]);
        var badge = badgeImage ? bar.add("image", undefined, badgeImage)
                               : bar.add("statictext", undefined, "news");
        function refreshNews() {
            var count = call("news");
            badge.visible = typeof count === "number" && count > 0;
            badge.helpTip = badge.visible ? count + " new on Quillo's page" : "";
        }
        refreshNews();

        var row = panel.add("group");
        row.add("statictext", undefined, "Popup shortcut:");
        var names = chords.slice(0);
        if (status.shortcut === customChord)
            names.push("Custom");
        var chooser = row.add("dropdownlist", undefined, names);
        if (typeof status.shortcut === "number" && status.shortcut >= 0 && status.shortcut < names.length)
            chooser.selection = status.shortcut;
        chooser.onChange = function () {
            if (this.selection)
                call("shortcut", this.selection.index);
        };
        message = panel.add("statictext", undefined, "", {multiline: true});
        message.alignment = ["fill", "top"];
    }

    var panel = host instanceof Panel ? host : new Window("palette", "Quillo", undefined, {resizeable: true});
    try {
        build(panel);
    } catch (e) {
        panel.add("statictext", undefined, "Quillo's panel could not be built: " + e, {multiline: true});
    }
    panel.onResizing = panel.onResize = function () {
        this.layout.resize();
    };
    panel.layout.layout(true);
    if (panel instanceof Window) {
        panel.center();
        panel.show();
    }
})(this);
