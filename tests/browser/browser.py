"""What the cases of the page share: fabrics, the page made of each, and a browser to look at it."""

import json
import shutil
import subprocess
import tempfile
from pathlib import Path

from selenium import webdriver
from selenium.webdriver.chrome.options import Options
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.ui import WebDriverWait

CHROMIUM = shutil.which("chromium")
CHROMEDRIVER = shutil.which("chromedriver")
if CHROMIUM is None or CHROMEDRIVER is None:
    raise ImportError("chromium and chromedriver are not installed")

DESKTOP = (1280, 800)
PHONE = (390, 844)
SECONDS = 60

# By name: how they are generated and checked.
FABRICS = {
    "clean": ["--levels", "3", "--radix", "8"],
    "faulty": ["--levels", "3", "--radix", "8", "--flids", "--fault", "missing-link=2",
               "--fault", "moved-cable=2", "--fault", "same-rank-link=1", "--fault", "root-link=1",
               "--fault", "shared-flid=1", "--fault", "missing-host=1"],
    "planes": ["--levels", "3", "--radix", "8", "--planes", "2", "--fault", "missing-link=1",
               "--fault", "asymmetric-aport=3"],
    "parallel": ["--levels", "2", "--radix", "16", "--parallel", "2", "--fault", "missing-link=3",
                 "--fault", "same-rank-link=1"],
    "four": ["--xgft", "4; 2,3,3,3; 1,2,3,3", "--fault", "missing-link=2",
             "--fault", "moved-cable=1"],
    "swapped": ["--levels", "3", "--radix", "8", "--fault", "swapped-cables=1",
                "--fault", "missing-link=2"],
    "tie": ["--levels", "2", "--radix", "16", "--parallel", "4", "--fault", "missing-link=2",
            "--fault", "swapped-cables=1"],
    "crowded": ["--levels", "3", "--radix", "64", "--fault", "swapped-cables=3",
                "--fault", "missing-link=5"],
    "one": ["--levels", "3", "--radix", "8", "--fault", "missing-link=1"],
    "dead": ["--levels", "3", "--radix", "8", "--fault", "dead-switch=1", "--fault", "missing-link=1",
             "--seed", "2"],
    "hosts": ["--levels", "3", "--radix", "8", "--fault", "missing-host=2"],
    "large": ["--levels", "3", "--radix", "64", "--fault", "missing-link=3",
              "--fault", "moved-cable=2", "--fault", "same-rank-link=2"],
}

DATA_START = '<script id="data" type="application/json">'

OPTIONS = ["--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
           "--disable-background-networking", "--disable-component-update", "--disable-sync",
           "--disable-dev-shm-usage"]


class Fabric:
    """A fabric, what the check says of it, and the page."""

    def __init__(self, browser, name, document, *words):
        self.document = document
        html, result = browser.folder / f"{name}.html", browser.folder / f"{name}.result"
        command = [browser.fabscope, "check", "--html", html, "--json", result, *words]
        run = subprocess.run([*command, f"{name}.json"], cwd=browser.folder, capture_output=True,
                             check=False)
        assert run.returncode in (0, 1, 2) and html.exists(), run.stderr.decode()
        self.url = html.as_uri()
        self.result = json.loads(result.read_text())
        self.findings = self.result["findings"]
        self.repairs = self.result["repairs"]
        self.switches = {node["guid"]: self.shown_name(node)
                         for node in document["nodes"] if node["type"] == "switch"}

    @staticmethod
    def shown_name(node):
        """As reports name a switch: a chip by its system and its number."""
        return f"{node['name'].split('/U')[0]}/{node['asic']}" if node.get("asic") else node["name"]

    def name(self, guid):
        return self.switches[guid]

    def of_kind(self, kind):
        return [finding for finding in self.findings if finding["kind"] == kind]

    def cables(self, guid):
        """Of one switch, to other switches: port, other switch, its port."""
        found = []
        for link in self.document["links"]:
            for end, far in (("a", "b"), ("b", "a")):
                if link[end] == guid and link[far] in self.switches:
                    found.append((link[f"{end}Port"], link[far], link[f"{far}Port"]))
        return sorted(found)


class Browser:
    def __init__(self, fabscope):
        self.fabscope = str(Path(fabscope).resolve())
        self.folder = Path(tempfile.mkdtemp())
        self.pages = 0
        options = Options()
        options.binary_location = CHROMIUM
        for option in [*OPTIONS, f"--user-data-dir={self.folder / 'profile'}"]:
            options.add_argument(option)
        options.set_capability("goog:loggingPrefs", {"browser": "ALL", "performance": "ALL"})
        self.driver = webdriver.Chrome(options=options, service=Service(CHROMEDRIVER))
        self.driver.set_script_timeout(SECONDS)
        # The browser's own first page is not what is tested.
        self.driver.get("about:blank")
        self.requests()
        self.size(DESKTOP)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.driver.quit()
        shutil.rmtree(self.folder, ignore_errors=True)

    # Fabrics

    def generate(self, name):
        path = self.folder / f"{name}.json"
        subprocess.run([self.fabscope, "generate", *FABRICS[name], "-o", path], check=True)
        return json.loads(path.read_text())

    def fabric(self, name, *words):
        return Fabric(self, name, self.generate(name), *words)

    def renamed(self, fabric, names):
        """A fabric whose switches bear these names, in turn."""
        document = self.generate(fabric)
        switches = [node for node in document["nodes"] if node["type"] == "switch"]
        for at, node in enumerate(switches):
            node["name"] = names[at % len(names)]
        (self.folder / "renamed.json").write_text(json.dumps(document))
        return Fabric(self, "renamed", document)

    def with_spare_switch(self, fabric):
        """A fabric with a switch that no cable leads to."""
        document = self.generate(fabric)
        document["nodes"].append({"guid": "0xfffffffe", "type": "switch", "name": "spare",
                                  "numPorts": 4})
        (self.folder / "spare.json").write_text(json.dumps(document))
        return Fabric(self, "spare", document)

    def with_loop(self, fabric):
        """A fabric in which a cable of the first leaf comes back to it: its ports."""
        document = self.generate(fabric)
        switches = {node["guid"]: node["name"] for node in document["nodes"]
                    if node["type"] == "switch"}
        leaf = next(guid for guid, name in switches.items() if "leaf" in name)
        links = document["links"]
        kept, gone = [link for link in links if link["b"] == leaf and link["a"] in switches][:2]
        links.remove(gone)
        kept["a"], kept["aPort"] = leaf, gone["bPort"]
        (self.folder / "loop.json").write_text(json.dumps(document))
        return Fabric(self, "loop", document)

    def with_result(self, name, change):
        """A fabric whose page was given another result than that of the check."""
        fabric = self.fabric(name)
        path = self.folder / f"{name}.html"
        head, rest = path.read_text().split(DATA_START)
        data, tail = rest.split("</script>", 1)
        data = json.loads(data)
        change(data["result"])
        path.write_text(f"{head}{DATA_START}{json.dumps(data)}</script>{tail}")
        fabric.result = data["result"]
        fabric.findings, fabric.repairs = data["result"]["findings"], data["result"]["repairs"]
        return fabric

    # The page

    def size(self, size):
        width, height = size
        self.driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {
            "width": width, "height": height, "deviceScaleFactor": 1, "mobile": size == PHONE})

    def colours(self, scheme):
        feature = {"name": "prefers-color-scheme", "value": scheme}
        self.driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": [feature]})

    def open(self, fabric, fragment=""):
        self.pages += 1
        self.driver.get("about:blank")
        self.driver.get(fabric.url + fragment)
        self.until("return document.documentElement.dataset.ready === 'true'")
        if fragment == "" and any(fabric.result["ranks"]):
            self.until_drawn()
        return fabric

    def until(self, script, *arguments):
        WebDriverWait(self.driver, SECONDS, 0.05).until(
            lambda driver: driver.execute_script(script, *arguments))

    def until_drawn(self, view="tree"):
        self.until(f"return document.querySelector('#{view}-view canvas')?.dataset.drawn === 'true'")

    def run(self, script, *arguments):
        return self.driver.execute_script(script, *arguments)

    def one(self, selector):
        return self.driver.find_element(By.CSS_SELECTOR, selector)

    def all(self, selector):
        return self.driver.find_elements(By.CSS_SELECTOR, selector)

    def texts(self, selector):
        """The texts of many elements at once."""
        return self.run("return Array.from(document.querySelectorAll(arguments[0]),"
                        " (one) => one.innerText)", selector)

    def text(self, selector):
        return self.one(selector).text

    def click(self, selector):
        self.one(selector).click()

    def keys(self, *keys):
        self.driver.switch_to.active_element.send_keys(*keys)

    def said(self):
        """What was told to those who do not see the page."""
        return self.run("return document.getElementById('live').textContent")

    def address(self):
        return self.run("return location.hash")

    def picture(self, view="tree"):
        """The canvas as text, once it does not change any more."""
        self.until_drawn(view)
        return self.driver.execute_async_script("""
            const [selector, done] = arguments
            const canvas = document.querySelector(selector)
            let before = ''
            const look = () => {
              const now = canvas.toDataURL()
              if (now === before) done(now)
              else setTimeout(look, 250)
              before = now
            }
            look()""", f"#{view}-view canvas")

    def record(self):
        """From now on, what is drawn is kept: texts, and rectangles, with their colours."""
        self.run("""
            window.drawn = []
            for (const kind of ['fillText', 'fillRect']) {
              const draw = CanvasRenderingContext2D.prototype[kind]
              CanvasRenderingContext2D.prototype[kind] = function (...words) {
                drawn.push([kind, this.fillStyle, ...words])
                return draw.apply(this, words)
              }
            }""")

    def drawn(self, kind):
        """Of the last picture, once it does not change any more."""
        return self.driver.execute_async_script("""
            const [kind, done] = arguments
            let before = -1
            const look = () => {
              if (drawn.length === before) {
                done(drawn.filter((one) => one[0] === kind).map((one) => one.slice(1)))
                drawn.length = 0
                return
              }
              before = drawn.length
              setTimeout(look, 250)
            }
            look()""", kind)

    # What holds whatever a case does

    def requests(self):
        """Addresses that were asked for since the last call, and were not refused by the page."""
        asked = {}
        for entry in self.driver.get_log("performance"):
            message = json.loads(entry["message"])["message"]
            words = message["params"]
            if message["method"] == "Network.requestWillBeSent":
                asked[words["requestId"]] = words["request"]["url"]
            elif message["method"] == "Network.loadingFailed" and words.get("blockedReason") == "csp":
                asked.pop(words["requestId"], None)
        return list(asked.values())

    def check_quiet(self):
        said = [entry["message"] for entry in self.driver.get_log("browser")]
        assert said == [], said
        foreign = [url for url in self.requests()
                   if not url.startswith((self.folder.as_uri(), "data:", "about:"))]
        assert foreign == [], foreign
        assert self.pages > 0


ARROWS = {"up": Keys.ARROW_UP, "down": Keys.ARROW_DOWN, "left": Keys.ARROW_LEFT,
          "right": Keys.ARROW_RIGHT}
