// The support files every popup of a project shares: one script and one
// stylesheet, written into the project by CPopupsSupport. Each starts with
// its generated version, so that copies made by an older library are found
// and rewritten in place.
#pragma once

namespace telvanix::popup_detail {

// Raise when either text below changes.
#define TELVANIX_POPUP_VERSION 1
#define TELVANIX_POPUP_STR2(x) #x
#define TELVANIX_POPUP_STR(x) TELVANIX_POPUP_STR2(x)

constexpr int kSupportVersion = TELVANIX_POPUP_VERSION;
// The first line of both files, up to the version number.
constexpr char kVersionStamp[] = "/* telvanix popups: generated version ";

constexpr char kScriptName[] = "telvanix-popups.js";
constexpr char kStyleName[] = "telvanix-popups.css";

constexpr char kScriptText[] =
    "/* telvanix popups: generated version " TELVANIX_POPUP_STR(TELVANIX_POPUP_VERSION)
    ". Rewritten in place when a newer telvanix generates another version. */\n"
    R"js((function () {
  "use strict";
  var LINK_CLASS = "telvanix-popup", BOX_CLASS = "telvanix-popup-box";
  var POPUP_OBJECT = "clsid:3b6a91e4-5c2d-11d0-9e37-0000a4c81d55";
  var box = null, opener = null, serial = 0;

  // javascript:telvanixPopup('t.htm#b') or javascript:telvanixPopupText('...'),
  // read without running it; anything else is not ours.
  function parseCall(href) {
    var m = /^\s*javascript:/i.test(href || "") &&
      /^\s*(telvanixPopup|telvanixPopupText)\s*\(\s*('(?:[^'\\\n\r]|\\.)*'|"(?:[^"\\\n\r]|\\.)*")\s*\)\s*;?\s*$/.exec(href.replace(/^\s*javascript:/i, ""));
    if (!m || m[2].length < 3) return null;
    var s = m[2].slice(1, -1).replace(/\\(u[0-9a-fA-F]{4}|x[0-9a-fA-F]{2}|.)/g, function (all, e) {
      if (e.length > 1) return String.fromCharCode(parseInt(e.slice(1), 16));
      return { n: "\n", r: "\r", t: "\t" }[e] || e;
    });
    return m[1] === "telvanixPopupText" ? { text: s } : { topic: s };
  }

  function targetOf(link) {
    var call = parseCall(link.getAttribute("href"));
    if (call) return call;
    if (link.hasAttribute("data-popup-text")) return { text: link.getAttribute("data-popup-text") };
    if (link.hasAttribute("data-popup-topic")) return { topic: link.getAttribute("data-popup-topic") };
    return link.hasAttribute("href") ? { topic: link.getAttribute("href") } : null;
  }

  function popupLink(el) {
    for (; el && el.nodeType === 1; el = el.parentNode) {
      if (el.tagName === "A" && (el.classList.contains(LINK_CLASS) || parseCall(el.getAttribute("href")))) return el;
    }
    return null;
  }

  function close(refocus) {
    if (!box) return;
    box.parentNode.removeChild(box);
    box = null;
    if (opener) {
      opener.setAttribute("aria-expanded", "false");
      opener.removeAttribute("aria-controls");
      if (refocus) opener.focus();
    }
    opener = null;
  }

  function place() {
    var r = opener.getBoundingClientRect(), width = document.documentElement.clientWidth;
    var left = Math.max(4, Math.min(r.left, width - box.offsetWidth - 4));
    box.style.left = (left + window.scrollX) + "px";
    box.style.top = (r.bottom + window.scrollY + 4) + "px";
  }

  function open(link, target) {
    close(false);
    opener = link;
    box = document.createElement("div");
    box.className = BOX_CLASS;
    box.id = "telvanix-popup-" + (++serial);
    box.setAttribute("role", target.text !== undefined ? "tooltip" : "dialog");
    box.setAttribute("aria-label", link.textContent.replace(/\s+/g, " ").trim());
    box.tabIndex = -1;
    if (target.text !== undefined) box.textContent = target.text;
    document.body.appendChild(box);
    link.setAttribute("aria-expanded", "true");
    link.setAttribute("aria-controls", box.id);
    if (target.topic !== undefined) loadTopic(target.topic, box);
    place();
    box.focus({ preventScroll: true });
  }

  // The topic's body, or with "#name" the element of that id or name (an
  // empty anchor stands for its parent block).
  function contentOf(doc, name) {
    var el = doc.body;
    if (name) {
      el = doc.getElementById(name) || doc.getElementsByName(name)[0] || doc.body;
      if (el.tagName === "A" && !el.textContent.trim() && el.parentNode) el = el.parentNode;
    }
    return el;
  }

  function fill(into, doc, name) {
    var from = contentOf(doc, name);
    into.textContent = "";
    for (var n = from.firstChild; n; n = n.nextSibling) {
      if (n.nodeType === 1 && /^(SCRIPT|STYLE|OBJECT)$/.test(n.tagName)) continue;
      into.appendChild(document.importNode(n, true));
    }
    if (box === into) place();
  }

  // fetch where the page is served; a page opened from disk may not read
  // other files, so the topic is then shown in a frame inside the box.
  function loadTopic(topic, into) {
    var hash = topic.indexOf("#"), name = hash >= 0 ? decodeURIComponent(topic.slice(hash + 1)) : "";
    var url = new URL(topic, document.baseURI);
    var frame = function () {
      into.textContent = "";
      var f = document.createElement("iframe");
      f.src = url.href;
      f.title = into.getAttribute("aria-label");
      into.appendChild(f);
      if (box === into) place();
    };
    if (url.protocol === "file:" || !window.fetch) { frame(); return; }
    into.textContent = "\u2026";
    fetch(url.href).then(function (r) {
      if (!r.ok) throw new Error(r.status);
      return r.text();
    }).then(function (html) {
      if (box === into) fill(into, new DOMParser().parseFromString(html, "text/html"), name);
    }).catch(function () {
      if (box === into) frame();
    });
  }

  // A popup object becomes a link that opens the same popup.
  function upgradeObjects() {
    var objects = document.getElementsByTagName("object");
    for (var i = objects.length - 1; i >= 0; --i) {
      var o = objects[i], p = {};
      if ((o.getAttribute("classid") || "").toLowerCase() !== POPUP_OBJECT) continue;
      var params = o.getElementsByTagName("param");
      for (var k = 0; k < params.length; ++k) p[(params[k].getAttribute("name") || "").toLowerCase()] = params[k].getAttribute("value") || "";
      var a = document.createElement("a");
      a.className = LINK_CLASS;
      if (p.text) { a.setAttribute("href", "#"); a.setAttribute("data-popup-text", p.text); }
      else if (p.item1) a.setAttribute("href", p.item1);
      else continue;
      a.textContent = (p.button || "").replace(/^text:/i, "") || "?";
      o.parentNode.replaceChild(a, o);
    }
  }

  function prepare() {
    upgradeObjects();
    var links = document.getElementsByTagName("a");
    for (var i = 0; i < links.length; ++i) {
      if (!popupLink(links[i])) continue;
      links[i].setAttribute("aria-haspopup", "dialog");
      links[i].setAttribute("aria-expanded", "false");
      if (!links[i].hasAttribute("href")) { links[i].tabIndex = 0; links[i].setAttribute("role", "button"); }
    }
  }

  document.addEventListener("click", function (e) {
    var link = popupLink(e.target), target = link && targetOf(link);
    if (target) {
      e.preventDefault();
      if (link === opener) close(true); else open(link, target);
    } else if (box && !box.contains(e.target)) {
      close(false);
    }
  }, true);

  document.addEventListener("keydown", function (e) {
    if (e.key === "Escape" && box) { e.preventDefault(); close(true); }
    else if ((e.key === "Enter" || e.key === " ") && e.target.getAttribute && e.target.getAttribute("role") === "button" && popupLink(e.target)) {
      e.preventDefault();
      e.target.click();
    }
  });

  window.addEventListener("resize", function () { if (box) place(); });
  window.telvanixPopup = function (topic) { var l = popupLink(document.activeElement); if (l) open(l, { topic: String(topic) }); };
  window.telvanixPopupText = function (text) { var l = popupLink(document.activeElement); if (l) open(l, { text: String(text) }); };
  if (document.readyState === "loading") document.addEventListener("DOMContentLoaded", prepare); else prepare();
})();
)js";

constexpr char kStyleText[] =
    "/* telvanix popups: generated version " TELVANIX_POPUP_STR(TELVANIX_POPUP_VERSION)
    ". Rewritten in place when a newer telvanix generates another version. */\n"
    R"css(.telvanix-popup { cursor: help; text-decoration: underline dotted; }
.telvanix-popup-box {
  position: absolute; z-index: 10000; box-sizing: border-box;
  max-width: min(28em, calc(100vw - 8px)); max-height: 50vh; overflow: auto;
  padding: 0.5em 0.75em; border: 1px solid #8a8a6a; border-radius: 3px;
  background: #fffff0; color: #000; box-shadow: 2px 3px 8px rgba(0, 0, 0, 0.3);
  font-size: 0.95em; line-height: 1.35; text-align: left;
}
.telvanix-popup-box:focus { outline: 2px solid #3a6fb0; outline-offset: 1px; }
.telvanix-popup-box h1, .telvanix-popup-box h2, .telvanix-popup-box h3 { font-size: 1.05em; margin: 0 0 0.4em; }
.telvanix-popup-box > :first-child { margin-top: 0; }
.telvanix-popup-box > :last-child { margin-bottom: 0; }
.telvanix-popup-box iframe { display: block; width: 26em; max-width: 100%; height: 12em; border: 0; }
)css";

}  // namespace telvanix::popup_detail
