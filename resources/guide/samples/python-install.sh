pip install requests
