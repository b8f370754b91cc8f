import os
import time

import requests

BASE = "http://127.0.0.1:17731"
ORIGIN = "https://pos.zemrak.example"

session = requests.Session()
session.trust_env = False  # العنوان على هذا الجهاز، فلا يمر عبر وسيط
session.headers["Origin"] = ORIGIN


def call(method, path, timeout=40, **kwargs):
    response = session.request(method, BASE + path, timeout=timeout, **kwargs)
    answer = response.json()
    if not response.ok:
        error = answer["error"]
        raise SystemExit(f"{response.status_code} {error['code']}: {error['message']}")
    return answer


def print_job(job, key):
    job = call("POST", "/v1/jobs", json=job, headers={"Idempotency-Key": key})["job"]
    while job["status"] not in ("completed", "failed", "cancelled"):
        path = f"/v1/jobs/{job['id']}?after={job['revision']}&wait=20000"
        job = call("GET", path)["job"]
    if job["status"] != "completed":
        raise SystemExit(f"لم تكتمل الطباعة: {job.get('errorCode', job['status'])}")
    return job


# المرة الأولى فقط: وافق على الجهاز خلال 60 ثانية، ثم احفظ الرمز في متغير البيئة
token = os.environ.get("ZEMRAK_PRINTER_TOKEN")
if not token:
    token = call("POST", "/v1/pair", timeout=75, json={"clientName": "My Python POS"})["token"]
    print(f"export ZEMRAK_PRINTER_TOKEN={token}")
session.headers["Authorization"] = f"Bearer {token}"

for printer in call("GET", "/v1/printers")["printers"]:
    print(printer["name"], printer["state"])

# المفتاح: ضع معرّفًا ثابتًا من نظامك، كرقم الفاتورة، فلا يطبع تكرار الطلب خلال 10 دقائق ورقة ثانية. الوقت هنا للتجربة فقط
done = print_job(
    {
        "printer": "Kitchen",
        "kind": "commands",
        "jobName": "فاتورة 1042",
        "commands": [
            {"type": "text", "text": "مطعم الواحة", "align": "center", "bold": True, "size": [2, 2]},
            {"type": "text", "text": "المجموع    30.00"},
            {"type": "qr", "data": "https://shop.example.com/r/1042", "size": 6},
            {"type": "cut"},
        ],
        "options": {"openDrawer": True},
    },
    key=f"python-invoice-1042-{time.time_ns()}",
)
print("receipt:", done["status"])
